#include "Tarnwick/Operations/OperationTable.h"

#include "Tarnwick/Operations/NewFolder.h"

namespace tw {

Operation operationOf(Command command)
{
    switch (command) {
    case Command::newFolder:
        return newFolder;
    default:
        return nullptr;
    }
}

} // namespace tw
