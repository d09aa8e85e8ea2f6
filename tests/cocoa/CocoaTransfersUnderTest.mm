#include "platform/cocoa/CocoaTransfers.h"
#include "tests/contract/TransfersTest.h"

namespace tests {

std::unique_ptr<platform::Transfers> makeTransfers(platform::Threads& threads,
                                                   const platform::transfers::TransferLimits& limits) {
    return std::make_unique<platform::CocoaTransfers>(threads, limits);
}

} // namespace tests
