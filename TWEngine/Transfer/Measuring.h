#pragma once

#include "TWEngine/Transfer/TransferWork.h"

namespace tw {

/// Finds out how much a copy has to do, while it runs.
namespace Measuring {

/// Puts what it has found into `work`. Without it a copy goes on all the same: a failure leaves the total unknown.
///
/// Cancellation: a stop leaves it unknown too.
Task<void> run(TransferWork::Shared work);

} // namespace Measuring

} // namespace tw
