#include "platform/curl/CurlTransfers.h"
#include "tests/contract/TransfersTest.h"

namespace tests {

std::unique_ptr<platform::Transfers> makeTransfers(platform::Threads& threads,
                                                   const platform::transfers::TransferLimits& limits) {
    return std::make_unique<platform::CurlTransfers>(threads, limits);
}

} // namespace tests
