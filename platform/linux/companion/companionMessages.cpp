#include "companionMessages.h"

#include "companionIdentity.h"
#include "frames.h"

#include <nlohmann/json.hpp>

using namespace Qt::StringLiterals;
using Json = nlohmann::json;

namespace {

constexpr quint64 largestId = (quint64(1) << 53) - 1; // the largest whole number that JavaScript counts to

/// A message with its windows, their tabs and each tab.
constexpr std::size_t deepestNesting = 5;

/// A character of an address takes six bytes at most ("\u001f"), a tab's other bytes less than this.
constexpr std::size_t longestTabText = 6 * longestAddress + 64;
static_assert(mostTabsInOneClose * longestTabText + 64 <= longestFrameToBrowser);

/// Builds the value of a JSON text, and stops at a key that comes twice and at nesting that no message has.
class StrictBuilder : public nlohmann::json_sax<Json>
{
public:
    Json root;
    QString problem;

    bool null() override { return put(nullptr); }
    bool boolean(bool value) override { return put(value); }
    bool number_integer(number_integer_t value) override { return put(value); }
    bool number_unsigned(number_unsigned_t value) override { return put(value); }
    bool number_float(number_float_t value, const string_t &) override { return put(value); }
    bool string(string_t &value) override { return put(std::move(value)); }
    bool binary(binary_t &) override { return stop(u"has binary data"_s); }
    bool start_object(std::size_t) override { return open(Json::object()); }
    bool start_array(std::size_t) override { return open(Json::array()); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool key(string_t &name) override
    {
        const auto [place, isNew] = m_open.back()->emplace(std::move(name), nullptr);
        m_place = &*place;
        return isNew || stop(u"has a key twice"_s);
    }
    bool parse_error(std::size_t, const std::string &, const nlohmann::detail::exception &) override
    {
        return stop(u"is not JSON"_s);
    }

private:
    bool put(Json value)
    {
        add(std::move(value));
        return true;
    }
    Json *add(Json value)
    {
        if (m_open.empty())
            return &(root = std::move(value));
        if (m_open.back()->is_array())
            return &m_open.back()->emplace_back(std::move(value));
        return &(*m_place = std::move(value));
    }
    bool open(Json value)
    {
        if (m_open.size() == deepestNesting)
            return stop(u"is nested too deeply"_s);
        m_open.push_back(add(std::move(value)));
        return true;
    }
    bool close()
    {
        m_open.pop_back();
        return true;
    }
    bool stop(const QString &why)
    {
        problem = why;
        return false;
    }

    std::vector<Json *> m_open; ///< objects and lists that have not ended
    Json *m_place = nullptr;    ///< where the value of the last key belongs
};

/// Reads the keys of one object and keeps the first thing that was wrong, in this object or an earlier one.
class KeyReader
{
public:
    KeyReader(const Json &object, QString &problem)
        : m_object(object)
        , m_problem(problem)
    {
        if (!object.is_object())
            fail(u"has another type where an object belongs"_s);
    }

    qint64 number(const char *key) { return numberOf(key, value(key)); }

    std::optional<qint64> numberOrNull(const char *key)
    {
        const auto *found = value(key);
        return found && found->is_null() ? std::nullopt : std::optional(numberOf(key, found));
    }

    bool flag(const char *key)
    {
        const auto *found = value(key);
        return isOf(key, found, found && found->is_boolean()) && found->get<bool>();
    }

    QString text(const char *key)
    {
        const auto *found = value(key);
        if (!isOf(key, found, found && found->is_string()))
            return {};
        return QString::fromStdString(found->get_ref<const std::string &>());
    }

    QString address(const char *key)
    {
        auto url = text(key);
        if (url.size() > longestAddress)
            fail(QLatin1StringView(key) + u" is too long"_s);
        return url;
    }

    /// An empty object where there is none.
    const Json &object(const char *key)
    {
        static const Json none = Json::object();
        const auto *found = value(key);
        return found ? *found : none;
    }

    template <typename Element, typename Read>
    std::vector<Element> list(const char *key, std::size_t most, Read read)
    {
        std::vector<Element> elements;
        const auto *found = value(key);
        if (!isOf(key, found, found && found->is_array()))
            return elements;
        if (found->size() > most) {
            fail(QLatin1StringView(key) + u" has too many"_s);
            return elements;
        }
        elements.reserve(found->size());
        for (const auto &element : *found) {
            elements.push_back(read(element, m_problem));
            if (!m_problem.isEmpty())
                break;
        }
        return elements;
    }

    /// To be called last: no key may be left.
    void end()
    {
        if (m_object.is_object() && m_object.size() != m_read)
            fail(u"has a key too many"_s);
    }

private:
    const Json *value(const char *key)
    {
        if (!m_problem.isEmpty())
            return nullptr;
        const auto found = m_object.find(key);
        if (found == m_object.end()) {
            fail(u"lacks "_s + QLatin1StringView(key));
            return nullptr;
        }
        ++m_read;
        return &*found;
    }

    qint64 numberOf(const char *key, const Json *found)
    {
        // "1.0" and "-0" are kept as other types than a whole number that is not negative.
        if (!isOf(key, found, found && found->is_number_unsigned() && found->get<quint64>() <= largestId))
            return 0;
        return found->get<qint64>();
    }

    bool isOf(const char *key, const Json *found, bool right)
    {
        if (found && !right)
            fail(u"has another type or range in "_s + QLatin1StringView(key));
        return right;
    }

    void fail(const QString &why)
    {
        if (m_problem.isEmpty())
            m_problem = why;
    }

    const Json &m_object;
    QString &m_problem;
    std::size_t m_read = 0;
};

CompanionTab readTab(const Json &json, QString &problem)
{
    KeyReader keys(json, problem);
    CompanionTab tab;
    tab.id = keys.number("id");
    tab.url = keys.address("url");
    keys.end();
    return tab;
}

CompanionWindow readWindow(const Json &json, QString &problem)
{
    KeyReader keys(json, problem);
    CompanionWindow window;
    window.id = keys.number("id");
    window.active = keys.numberOrNull("active");
    window.tabs = keys.list<CompanionTab>("tabs", mostTabs, readTab);
    keys.end();
    return window;
}

CompanionMessage readHello(KeyReader &keys, QString &)
{
    HelloMessage hello;
    hello.protocol = keys.number("protocol");
    keys.text("version"); // for people who read along
    hello.privateWindows = keys.flag("privateWindows");
    return hello;
}

CompanionMessage readWindows(KeyReader &keys, QString &)
{
    WindowsMessage windows;
    windows.windows = keys.list<CompanionWindow>("windows", mostWindows, readWindow);
    windows.focused = keys.numberOrNull("focused");
    return windows;
}

CompanionMessage readWindowNow(KeyReader &keys, QString &problem)
{
    return WindowMessage{readWindow(keys.object("window"), problem)};
}

CompanionMessage readWindowGone(KeyReader &keys, QString &)
{
    return WindowGoneMessage{keys.number("window")};
}

CompanionMessage readFocus(KeyReader &keys, QString &)
{
    return FocusMessage{keys.numberOrNull("window")};
}

CompanionMessage readOpened(KeyReader &keys, QString &problem)
{
    OpenedMessage opened;
    opened.window = keys.number("window");
    opened.index = keys.number("index");
    opened.tab = readTab(keys.object("tab"), problem);
    return opened;
}

CompanionMessage readAddress(KeyReader &keys, QString &)
{
    AddressMessage address;
    address.tab.id = keys.number("tab");
    address.tab.url = keys.address("url");
    return address;
}

CompanionMessage readActive(KeyReader &keys, QString &)
{
    ActiveMessage active;
    active.window = keys.number("window");
    active.tab = keys.number("tab");
    return active;
}

CompanionMessage readGone(KeyReader &keys, QString &)
{
    return GoneMessage{keys.number("tab")};
}

struct Kind
{
    QLatin1StringView type;
    CompanionMessage (*read)(KeyReader &, QString &problem);
};
constexpr Kind kinds[] = {
    {"hello"_L1, readHello},           {"windows"_L1, readWindows}, {"window"_L1, readWindowNow},
    {"windowGone"_L1, readWindowGone}, {"focus"_L1, readFocus},     {"opened"_L1, readOpened},
    {"address"_L1, readAddress},       {"active"_L1, readActive},   {"gone"_L1, readGone},
};

Result<CompanionMessage> readMessage(const Json &object)
{
    QString problem;
    KeyReader keys(object, problem);
    const auto type = keys.text("type");
    if (!problem.isEmpty())
        return Failure{problem};
    for (const auto &kind : kinds) {
        if (kind.type != type)
            continue;
        auto message = kind.read(keys, problem);
        keys.end();
        if (!problem.isEmpty())
            return Failure{kind.type + u' ' + problem};
        return message;
    }
    return Failure{u"is of no known type"_s};
}

std::string textOf(const Json &json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace

Result<CompanionMessage> decodeCompanionMessage(std::string_view text)
{
    // The parser takes a zero byte for the end of the text and passes over a byte order mark.
    if (text.find('\0') != std::string_view::npos || text.starts_with("\xEF\xBB\xBF"))
        return Failure{u"is not JSON"_s};
    StrictBuilder builder;
    if (!Json::sax_parse(text.begin(), text.end(), &builder))
        return Failure{builder.problem};
    return readMessage(builder.root);
}

std::string encodeWelcome()
{
    return textOf({{"type", "welcome"}, {"protocol", companionProtocol}});
}

std::vector<std::string> encodeClose(const std::vector<CompanionTab> &tabs)
{
    std::vector<std::string> messages;
    for (std::size_t first = 0; first < tabs.size(); first += mostTabsInOneClose) {
        auto list = Json::array();
        for (auto place = first; place < std::min(first + mostTabsInOneClose, tabs.size()); ++place)
            list.push_back({{"id", tabs[place].id}, {"url", tabs[place].url.toStdString()}});
        messages.push_back(textOf({{"type", "close"}, {"tabs", std::move(list)}}));
    }
    return messages;
}
