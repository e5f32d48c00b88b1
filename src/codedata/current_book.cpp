#include "codedata/current_book.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <iterator>
#include <thread>
#include <utility>

#include "base/counters.h"

namespace luadui {

const CurrentBook::Lane& CurrentBook::_lane() const noexcept {
    return m_lanes[std::hash<std::thread::id>()(std::this_thread::get_id()) % kLanes];
}

void CurrentBook::Replace(std::shared_ptr<const CodeBook> book) {
    m_book = book.get();
    std::shared_ptr<const CodeBook> old = std::exchange(m_owned, std::move(book));
    // Whoever reads the old book entered before it was replaced, so it is in one of the two counts now.
    bool haveLeft = true;
    for (int turn = 0; turn < 2; ++turn) {
        const size_t phase = m_phase.load();
        m_phase = 1 - phase;
        haveLeft = _waitUntilLeft(phase) && haveLeft;
    }
    if (haveLeft) return;
    CCounters::Add("code_book_kept");
    new std::shared_ptr<const CodeBook>(std::move(old));
}

bool CurrentBook::_waitUntilLeft(size_t phase) const {
    const auto hasLeft = [phase](const Lane& lane) { return lane.readers[phase].load() == 0; };
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    while (!std::all_of(std::begin(m_lanes), std::end(m_lanes), hasLeft)) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace luadui
