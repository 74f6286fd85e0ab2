#include "TWEngine/Runtime/PipeError.h"

#include <system_error>

namespace tw {

PipeError::PipeError(int errorNumber) : number(errorNumber), description(std::generic_category().message(errorNumber))
{
}

} // namespace tw
