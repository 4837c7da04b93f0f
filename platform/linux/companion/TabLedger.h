#pragma once

#include "companionMessages.h"

/// What one connection has told of its windows and tabs. Numbers are unique in it: a tab that is told of
/// again elsewhere has moved there.
class TabLedger
{
public:
    /// What a message has changed.
    enum class Outcome {
        List,       ///< windows, tabs or addresses
        Front,      ///< only which window or tab is in front
        PassedOver, ///< nothing: it came out of turn, or speaks of what is not known
        Broken,     ///< nothing: too many windows or tabs, or one of them twice
    };

    Outcome apply(CompanionMessage message);

    /// Whether `hello` and all windows have been told.
    bool told() const { return m_stage == Stage::Told; }

    /// What the last `hello` said of private windows.
    bool seesPrivateWindows() const { return m_privateWindows; }

    /// In the browser's own order. An active tab is always one of its window's.
    const std::vector<CompanionWindow> &windows() const { return m_windows; }

    std::size_t tabCount() const;

    /// The window that has the keyboard, as last told. It may be one that is not known: then none of the
    /// known ones has it.
    std::optional<qint64> focused() const { return m_focused; }

    /// The active tab of the window that has the keyboard; null where that is not known.
    const CompanionTab *frontTab() const;

private:
    enum class Stage { Strange, Greeted, Told };

    Outcome take(const HelloMessage &message);
    Outcome take(WindowsMessage &message);
    Outcome take(WindowMessage &message);
    Outcome take(const WindowGoneMessage &message);
    Outcome take(const FocusMessage &message);
    Outcome take(OpenedMessage &message);
    Outcome take(AddressMessage &message);
    Outcome take(const ActiveMessage &message);
    Outcome take(const GoneMessage &message);

    /// A tab's place. Searching all tabs in a row costs less than keeping an index of them up to date.
    struct Place
    {
        CompanionWindow *window = nullptr;
        std::vector<CompanionTab>::iterator tab;
    };
    std::optional<Place> find(qint64 tab);
    CompanionWindow *window(qint64 id);
    static void removeAt(const Place &place);

    Stage m_stage = Stage::Strange;
    bool m_privateWindows = false;
    std::vector<CompanionWindow> m_windows;
    std::optional<qint64> m_focused;
};
