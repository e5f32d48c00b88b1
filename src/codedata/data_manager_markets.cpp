// CDataManager: the markets.
#include <atomic>
#include <iterator>

#include "codedata/data_manager.h"
#include "codedata/market_map.h"

namespace luadui {
namespace {

// The tables are constant; callers may rely on nothing being known before the module started.
constinit std::atomic<bool> g_isFilled = false;

bool IsFilled() { return g_isFilled.load(std::memory_order_relaxed); }

}  // namespace

void CDataManager::InitMarketMap() { g_isFilled.store(true, std::memory_order_relaxed); }

std::string CDataManager::GetMarket(std::string_view id) {
    return std::string(IsFilled() ? MarketNameOf(id) : kUnknownMarketName);
}

int CDataManager::GetMarketNew(std::string_view id) {
    return IsFilled() ? MarketTypeOf(id) : kUnknownMarketType;
}

int CDataManager::GetMarketMapSize() { return IsFilled() ? static_cast<int>(std::size(kMarketNames)) : 0; }

std::string CDataManager::GetMarketID(std::string_view id) {
    const std::string_view code = IsFilled() ? ExchangeCodeOf(id) : std::string_view();
    return std::string(code.empty() ? id : code);
}

}  // namespace luadui
