// What a relay may send, however broken: bytes, frames, messages, ledger.
#include "TabLedger.h"
#include "frames.h"
#include "require.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>

namespace {

void requireUnique(std::vector<qint64> &ids)
{
    std::sort(ids.begin(), ids.end());
    require(std::adjacent_find(ids.begin(), ids.end()) == ids.end());
    const qint64 largest = (qint64(1) << 53) - 1;
    require(ids.empty() || (ids.front() >= 0 && ids.back() <= largest));
}

std::vector<CompanionTab> checkedTabs(const TabLedger &ledger)
{
    std::vector<CompanionTab> tabs;
    std::vector<qint64> windowIds;
    std::vector<qint64> tabIds;
    bool activeInFront = ledger.frontTab() == nullptr;
    for (const auto &window : ledger.windows()) {
        windowIds.push_back(window.id);
        bool activeIsKnown = !window.active;
        for (const auto &tab : window.tabs) {
            require(tab.url.size() <= longestAddress);
            tabIds.push_back(tab.id);
            tabs.push_back(tab);
            activeIsKnown = activeIsKnown || tab.id == window.active;
            activeInFront = activeInFront || (&tab == ledger.frontTab() && window.id == ledger.focused());
        }
        require(activeIsKnown);
    }
    require(activeInFront);
    require(windowIds.size() <= mostWindows && tabIds.size() <= mostTabs);
    require(ledger.tabCount() == tabIds.size());
    require(ledger.told() || tabs.empty());
    requireUnique(windowIds);
    requireUnique(tabIds);
    return tabs;
}

/// Orders to close them all name each once, in order, and fit into frames.
void checkOrders(const std::vector<CompanionTab> &tabs)
{
    std::size_t next = 0;
    for (const auto &order : encodeClose(tabs)) {
        require(order.size() <= longestFrameToBrowser);
        const auto json = nlohmann::json::parse(order, nullptr, false);
        require(json.is_object() && json.size() == 2 && json["type"] == "close");
        require(json["tabs"].is_array() && !json["tabs"].empty() &&
                json["tabs"].size() <= mostTabsInOneClose);
        for (const auto &tab : json["tabs"]) {
            require(next < tabs.size() && tab.size() == 2 && tab["id"] == tabs[next].id);
            require(QString::fromStdString(tab["url"].get<std::string>()) == tabs[next].url);
            ++next;
        }
    }
    require(next == tabs.size());
}

} // namespace

// The name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data,
                                      size_t size) // NOLINT(readability-identifier-naming)
{
    FrameReader frames(longestFrameFromBrowser);
    TabLedger ledger;
    // In two pieces, cut where the input itself says.
    const auto cut = size == 0 ? 0 : data[size - 1] % (size + 1);
    const auto *text = reinterpret_cast<const char *>(data);
    for (const std::string_view piece :
         {std::string_view(text, cut), std::string_view(text + cut, size - cut)}) {
        frames.append(piece);
        while (const auto frame = frames.next()) {
            auto message = decodeCompanionMessage(*frame);
            if (!message) {
                require(!message.reason().isEmpty());
                return 0; // the connection is closed
            }
            if (ledger.apply(message.value()) == TabLedger::Outcome::Broken)
                return 0;
            checkedTabs(ledger);
        }
    }
    checkOrders(checkedTabs(ledger));
    return 0;
}
