#include "live_job.h"

#include <string>

namespace vok::test {
namespace {

void fill(char* bytes, std::size_t size, DWORD seed) {
    for (std::size_t at = 0; at < size; ++at)
        bytes[at] = static_cast<char>(seed * 31 + at * 7 + 1);
}

}  // namespace

LiveJob::LiveJob(const sample::VokCalls& calls, const std::string& printer, DWORD number)
    : record(printer), calls_(calls), printer_(printer), number_(number) {}

BOOL LiveJob::launch() {
    return calls_.launch(printer_.c_str(), "LPT1:", record.get());
}

bool LiveJob::reach() {
    constexpr int tries = 6000;
    constexpr DWORD pause = 50;
    for (int count = 0; count < tries; ++count) {
        if (launch() != FALSE)
            return true;
        record.dropCompanions();
        Sleep(pause);
    }
    return false;
}

LONG LiveJob::dral(DWORD event) {
    sample::DralBlock block{event, number_, page, {}};
    fill(block.reserved, sizeof block.reserved, number_ + page);
    sum_ = sample::blockSum(&block, sizeof block);
    return calls_.sendDral(&block, event, record.get());
}

LONG LiveJob::nemb(DWORD event) {
    sample::NembBlock block{};
    fill(block.printer, sizeof block.printer, number_ + page);
    sample::copyText(block.printer, sizeof block.printer, printer_);
    block.event = event;
    block.job = number_;
    block.page = page;
    fill(block.document, sizeof block.document, number_ * 3 + page);
    fill(block.reserved, sizeof block.reserved, number_ + page);
    sum_ = sample::blockSum(&block, sizeof block);
    return calls_.sendNemb(&block, event, record.get());
}

}  // namespace vok::test
