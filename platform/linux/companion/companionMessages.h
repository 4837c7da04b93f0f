#pragma once

#include "Result.h"

#include <QString>

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// What the extension and the program say to each other: companion/PROTOCOL.md.

/// Windows and tabs of one connection at most; more come from a broken peer.
inline constexpr std::size_t mostWindows = 1000;
inline constexpr std::size_t mostTabs = 20'000;

/// UTF-16 units of an address at most. The extension cuts longer ones.
inline constexpr qsizetype longestAddress = 1024;

/// Tabs in one order to close at most.
inline constexpr std::size_t mostTabsInOneClose = 100;

/// A tab by the browser's own number, 0 to 2^53 - 1. An empty address stands for none.
struct CompanionTab
{
    qint64 id = 0;
    QString url;

    bool operator==(const CompanionTab &) const = default;
};

/// A window by the browser's own number, 0 to 2^53 - 1, with its tabs from left to right.
struct CompanionWindow
{
    qint64 id = 0;
    std::optional<qint64> active; ///< the tab in front
    std::vector<CompanionTab> tabs;

    bool operator==(const CompanionWindow &) const = default;
};

/// The answer to `welcome`.
struct HelloMessage
{
    qint64 protocol = 0;
    bool privateWindows = false; ///< whether the extension may see them

    bool operator==(const HelloMessage &) const = default;
};

/// All windows there are.
struct WindowsMessage
{
    std::vector<CompanionWindow> windows; ///< in the browser's own order
    std::optional<qint64> focused;

    bool operator==(const WindowsMessage &) const = default;
};

/// One window as it is now.
struct WindowMessage
{
    CompanionWindow window;

    bool operator==(const WindowMessage &) const = default;
};

struct WindowGoneMessage
{
    qint64 window = 0;

    bool operator==(const WindowGoneMessage &) const = default;
};

/// Which window has the keyboard; none where no visible one has.
struct FocusMessage
{
    std::optional<qint64> window;

    bool operator==(const FocusMessage &) const = default;
};

/// A tab was inserted.
struct OpenedMessage
{
    qint64 window = 0;
    qint64 index = 0; ///< its place, from 0
    CompanionTab tab;

    bool operator==(const OpenedMessage &) const = default;
};

/// A tab shows another address.
struct AddressMessage
{
    CompanionTab tab;

    bool operator==(const AddressMessage &) const = default;
};

/// A tab came to the front of its window.
struct ActiveMessage
{
    qint64 window = 0;
    qint64 tab = 0;

    bool operator==(const ActiveMessage &) const = default;
};

struct GoneMessage
{
    qint64 tab = 0;

    bool operator==(const GoneMessage &) const = default;
};

using CompanionMessage =
    std::variant<HelloMessage, WindowsMessage, WindowMessage, WindowGoneMessage, FocusMessage, OpenedMessage,
                 AddressMessage, ActiveMessage, GoneMessage>;

/// Reads one message of the extension. What is not exactly as agreed fails, with a reason in English that
/// names keys and types but no address.
Result<CompanionMessage> decodeCompanionMessage(std::string_view text);

/// The first message on a connection.
std::string encodeWelcome();

/// The orders to close these tabs, in this order; none for no tabs. Addresses are such as were decoded.
std::vector<std::string> encodeClose(const std::vector<CompanionTab> &tabs);
