#include "TabLedger.h"

#include <algorithm>

namespace {

bool holds(const CompanionWindow &window, qint64 tab)
{
    return std::any_of(window.tabs.begin(), window.tabs.end(),
                       [tab](const CompanionTab &each) { return each.id == tab; });
}

void forgetUnknownActive(CompanionWindow &window)
{
    if (window.active && !holds(window, *window.active))
        window.active.reset();
}

void addIds(const CompanionWindow &window, std::vector<qint64> &ids)
{
    for (const auto &tab : window.tabs)
        ids.push_back(tab.id);
}

/// Sorts the numbers and says whether each is there once.
bool sortedAndUnique(std::vector<qint64> &ids)
{
    std::sort(ids.begin(), ids.end());
    return std::adjacent_find(ids.begin(), ids.end()) == ids.end();
}

} // namespace

TabLedger::Outcome TabLedger::apply(CompanionMessage message)
{
    const bool inTurn = std::holds_alternative<HelloMessage>(message) || told() ||
                        (m_stage == Stage::Greeted && std::holds_alternative<WindowsMessage>(message));
    if (!inTurn)
        return Outcome::PassedOver;
    return std::visit([this](auto &each) { return take(each); }, message);
}

std::size_t TabLedger::tabCount() const
{
    std::size_t count = 0;
    for (const auto &each : m_windows)
        count += each.tabs.size();
    return count;
}

const CompanionTab *TabLedger::frontTab() const
{
    for (const auto &each : m_windows) {
        if (each.id != m_focused)
            continue;
        for (const auto &tab : each.tabs) {
            if (tab.id == each.active)
                return &tab;
        }
    }
    return nullptr;
}

TabLedger::Outcome TabLedger::take(const HelloMessage &message)
{
    m_stage = Stage::Greeted;
    m_privateWindows = message.privateWindows;
    m_windows.clear();
    m_focused.reset();
    return Outcome::List;
}

TabLedger::Outcome TabLedger::take(WindowsMessage &message)
{
    std::vector<qint64> windowIds;
    std::vector<qint64> tabIds;
    for (auto &each : message.windows) {
        windowIds.push_back(each.id);
        addIds(each, tabIds);
        forgetUnknownActive(each);
    }
    if (windowIds.size() > mostWindows || tabIds.size() > mostTabs || !sortedAndUnique(windowIds) ||
        !sortedAndUnique(tabIds))
        return Outcome::Broken;
    m_stage = Stage::Told;
    m_windows = std::move(message.windows);
    m_focused = message.focused;
    return Outcome::List;
}

TabLedger::Outcome TabLedger::take(WindowMessage &message)
{
    std::vector<qint64> tabIds;
    addIds(message.window, tabIds);
    if (!sortedAndUnique(tabIds))
        return Outcome::Broken;
    // Those that this window has now or had before are not counted where they are.
    auto *known = window(message.window.id);
    const auto replaced = [&](const CompanionTab &tab) {
        return std::binary_search(tabIds.begin(), tabIds.end(), tab.id);
    };
    auto count = tabIds.size();
    for (const auto &each : m_windows) {
        if (&each != known)
            count +=
                each.tabs.size() - std::size_t(std::count_if(each.tabs.begin(), each.tabs.end(), replaced));
    }
    if (count > mostTabs || (!known && m_windows.size() == mostWindows))
        return Outcome::Broken;

    for (auto &each : m_windows) {
        std::erase_if(each.tabs, replaced);
        forgetUnknownActive(each);
    }
    forgetUnknownActive(message.window);
    if (known)
        *known = std::move(message.window);
    else
        m_windows.push_back(std::move(message.window));
    return Outcome::List;
}

TabLedger::Outcome TabLedger::take(const WindowGoneMessage &message)
{
    if (m_focused == message.window)
        m_focused.reset();
    const auto gone =
        std::erase_if(m_windows, [&](const CompanionWindow &each) { return each.id == message.window; });
    return gone ? Outcome::List : Outcome::PassedOver;
}

TabLedger::Outcome TabLedger::take(const FocusMessage &message)
{
    m_focused = message.window;
    return Outcome::Front;
}

TabLedger::Outcome TabLedger::take(OpenedMessage &message)
{
    auto *target = window(message.window);
    if (!target)
        return Outcome::PassedOver;
    if (const auto known = find(message.tab.id))
        removeAt(*known);
    else if (tabCount() == mostTabs)
        return Outcome::Broken;
    const auto index = std::min(message.index, qint64(target->tabs.size()));
    target->tabs.insert(target->tabs.begin() + index, std::move(message.tab));
    return Outcome::List;
}

TabLedger::Outcome TabLedger::take(AddressMessage &message)
{
    const auto known = find(message.tab.id);
    if (!known)
        return Outcome::PassedOver;
    known->tab->url = std::move(message.tab.url);
    return Outcome::List;
}

TabLedger::Outcome TabLedger::take(const ActiveMessage &message)
{
    auto *target = window(message.window);
    if (!target || !holds(*target, message.tab))
        return Outcome::PassedOver;
    target->active = message.tab;
    return Outcome::Front;
}

TabLedger::Outcome TabLedger::take(const GoneMessage &message)
{
    const auto known = find(message.tab);
    if (!known)
        return Outcome::PassedOver;
    removeAt(*known);
    return Outcome::List;
}

std::optional<TabLedger::Place> TabLedger::find(qint64 tab)
{
    for (auto &each : m_windows) {
        const auto found = std::find_if(each.tabs.begin(), each.tabs.end(),
                                        [tab](const CompanionTab &candidate) { return candidate.id == tab; });
        if (found != each.tabs.end())
            return Place{&each, found};
    }
    return std::nullopt;
}

CompanionWindow *TabLedger::window(qint64 id)
{
    const auto found = std::find_if(m_windows.begin(), m_windows.end(),
                                    [id](const CompanionWindow &each) { return each.id == id; });
    return found == m_windows.end() ? nullptr : &*found;
}

void TabLedger::removeAt(const Place &place)
{
    if (place.window->active == place.tab->id)
        place.window->active.reset();
    place.window->tabs.erase(place.tab);
}
