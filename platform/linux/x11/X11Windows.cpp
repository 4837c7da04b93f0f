#include "X11Windows.h"

#include "shownName.h"
#include "x11Log.h"

#include <QStringDecoder>

#include <algorithm>
#include <cstring>
#include <unistd.h>
#include <utility>
#include <xcb/res.h>

using namespace Qt::StringLiterals;

namespace {

constexpr uint32_t longestProperty = 256;      // in units of 4 bytes; names are below 100 bytes
constexpr uint32_t longestWindowList = 16'384; // windows
constexpr uint32_t fromPager = 2;              // source indication of EWMH

QByteArray thisHost()
{
    char name[256] = {};
    gethostname(name, sizeof(name) - 1);
    return name;
}

/// The part before the first `end`, or all.
QByteArray upTo(const QByteArray &text, char end)
{
    const auto at = text.indexOf(end);
    return at < 0 ? text : text.first(at);
}

bool isThisHost(const QByteArray &machine, const QByteArray &host)
{
    const auto shortName = [](const QByteArray &name) { return upTo(name, '.').toLower(); };
    return machine.isEmpty() || machine == "localhost" || shortName(machine) == shortName(host);
}

QString decoded(const QByteArray &text)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString read = utf8(text);
    return shownName(utf8.hasError() ? QString::fromLatin1(text) : read);
}

template <typename Value>
std::vector<Value> valuesOf(const QByteArray &bytes)
{
    std::vector<Value> values(size_t(bytes.size()) / sizeof(Value));
    if (!values.empty())
        memcpy(values.data(), bytes.constData(), values.size() * sizeof(Value));
    return values;
}

template <typename Value>
Value firstOf(const QByteArray &bytes)
{
    const auto values = valuesOf<Value>(bytes);
    return values.empty() ? Value{} : values[0];
}

} // namespace

/// Requests about one window that are under way at once.
struct X11Windows::Questions
{
    xcb_window_t window;
    xcb_get_property_cookie_t wmClass, pid, machine, type, gtkId, kdeFile, transientFor, protocols;
    unsigned int client;
};

X11Windows::X11Windows(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
    , m_hostName(thisHost())
{}

bool X11Windows::update()
{
    while (const auto event = m_connection->nextEvent())
        takeEvent(*event);
    if (!m_connection->usable())
        return false;
    const auto missed = m_connection->missedAnswers();
    const bool changed = m_managerStale || m_listStale || m_activeStale || !m_stale.empty();
    if (std::exchange(m_managerStale, false))
        readManager();
    if (std::exchange(m_listStale, false))
        readList();
    if (!m_stale.empty()) {
        const auto stale = std::exchange(m_stale, {});
        readWindows({stale.begin(), stale.end()});
    }
    if (std::exchange(m_activeStale, false))
        readActive();
    // What was asked while the server fell silent is asked again, even if it speaks again by now.
    if (missed != m_connection->missedAnswers())
        startAnew();
    return changed;
}

std::vector<WindowFacts> X11Windows::windows() const
{
    std::vector<WindowFacts> result;
    result.reserve(m_list.size());
    for (const auto id : m_list) {
        const auto found = m_windows.find(id);
        if (found != m_windows.end() && found->second.ordinary)
            result.push_back(found->second.facts);
    }
    return result;
}

std::optional<WindowFacts> X11Windows::active() const
{
    // Openbox goes on naming a window that has hidden itself, until another one gets the focus.
    const auto found = m_windows.find(m_active);
    return found == m_windows.end() || !found->second.ordinary ? std::nullopt
                                                               : std::optional(found->second.facts);
}

std::unordered_set<qint32> X11Windows::sessionProcesses() const
{
    std::unordered_set<qint32> processes{m_connection->serverProcess(), m_managerProcess};
    processes.erase(0);
    return processes;
}

int X11Windows::closeWindowsOf(const std::vector<ProcessKey> &processes)
{
    int count = 0;
    for (const auto id : m_list) {
        const auto found = m_windows.find(id);
        if (found == m_windows.end() || !found->second.ordinary)
            continue;
        const auto &window = found->second;
        const bool theirs = std::any_of(processes.begin(), processes.end(), [&](const ProcessKey &process) {
            return process.id == window.facts.processId;
        });
        if (!theirs)
            continue;
        if (m_manager == 0 && !window.closable) {
            qCInfo(logX11) << "a window of" << window.facts.className << "knows no polite way to close";
            continue;
        }
        ++count;
        const auto &atoms = m_connection->atoms();
        if (m_manager != 0)
            sendMessage(m_connection->root(),
                        XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY, id,
                        atoms.closeWindow, XCB_CURRENT_TIME, fromPager);
        else
            sendMessage(id, XCB_EVENT_MASK_NO_EVENT, id, atoms.wmProtocols, atoms.wmDeleteWindow,
                        XCB_CURRENT_TIME);
    }
    m_connection->flush();
    return count;
}

void X11Windows::takeEvent(const xcb_generic_event_t &event)
{
    switch (event.response_type & 0x7f) { // the top bit marks events that clients sent
    case XCB_PROPERTY_NOTIFY:
        takePropertyChange(reinterpret_cast<const xcb_property_notify_event_t &>(event));
        break;
    case XCB_DESTROY_NOTIFY:
        if (reinterpret_cast<const xcb_destroy_notify_event_t &>(event).window == m_manager)
            m_managerStale = m_activeStale = true;
        m_listStale = true;
        break;
    case XCB_MAP_NOTIFY:
    case XCB_UNMAP_NOTIFY:
        m_listStale = m_listStale || m_manager == 0;
        break;
    case 0:
        takeError(reinterpret_cast<const xcb_generic_error_t &>(event));
        break;
    default: // what else comes with the subscriptions
        break;
    }
}

/// Of a request that has no answer, such as a subscription.
void X11Windows::takeError(const xcb_generic_error_t &error)
{
    if (error.error_code == XCB_WINDOW)
        return; // windows vanish all the time
    qCWarning(logX11) << "the X server refused request" << error.major_code << "with error"
                      << error.error_code;
    if (error.error_code == XCB_ALLOC) // one of the notices may never come: all is asked for anew
        startAnew();
}

void X11Windows::startAnew()
{
    m_windows.clear();
    m_managerStale = m_listStale = m_activeStale = true;
}

void X11Windows::takePropertyChange(const xcb_property_notify_event_t &change)
{
    const auto &atoms = m_connection->atoms();
    if (change.window == m_connection->root()) {
        if (change.atom == atoms.supportingWmCheck)
            m_managerStale = m_listStale = m_activeStale = true;
        m_listStale = m_listStale || change.atom == atoms.clientList;
        m_activeStale = m_activeStale || change.atom == atoms.activeWindow;
        return;
    }
    if (change.atom == atoms.supportingWmCheck)
        m_managerStale = true; // a manager that marks the root before its own window
    const bool ofUse = change.atom == XCB_ATOM_WM_CLASS || change.atom == XCB_ATOM_WM_CLIENT_MACHINE ||
                       change.atom == XCB_ATOM_WM_TRANSIENT_FOR || change.atom == atoms.wmPid ||
                       change.atom == atoms.windowType || change.atom == atoms.gtkApplicationId ||
                       change.atom == atoms.kdeDesktopFile || change.atom == atoms.wmProtocols;
    if (ofUse && m_windows.contains(change.window))
        m_stale.insert(change.window);
}

void X11Windows::readManager()
{
    // Notices are ordered before each answer is asked for: what changes in between is told of.
    const auto watch = [this](xcb_window_t window, uint32_t events) {
        xcb_change_window_attributes(m_connection->handle(), window, XCB_CW_EVENT_MASK, &events);
    };
    const auto root = m_connection->root();
    const auto check = m_connection->atoms().supportingWmCheck;
    watch(root, XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
    const auto named = firstOf<xcb_window_t>(property(askProperty(root, check, XCB_ATOM_WINDOW)));
    if (named != 0)
        watch(named, XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE);
    // A manager that crashed leaves its mark on the root; its window is gone then, or another's without the
    // mark.
    const bool alive =
        named != 0 && firstOf<xcb_window_t>(property(askProperty(named, check, XCB_ATOM_WINDOW))) == named;
    if (alive)
        watch(root, XCB_EVENT_MASK_PROPERTY_CHANGE); // it lists the windows, so their coming is its to tell
    if (alive != (m_manager != 0) || m_list.empty())
        qCDebug(logX11) << (alive ? "a window manager runs"
                                  : "no window manager runs: the active window is unknown");
    m_manager = alive ? named : 0;
    m_managerProcess = 0;
    m_listStale = m_activeStale = true;
    if (!alive)
        return;
    const auto claimed = askProperty(m_manager, m_connection->atoms().wmPid, XCB_ATOM_CARDINAL);
    const auto known = clientProcess(askClientProcess(m_manager));
    const auto claim = firstOf<qint32>(property(claimed));
    m_managerProcess = known > 0 ? known : claim;
}

void X11Windows::readList()
{
    m_list = m_manager != 0 ? managedWindows() : topWindows();
    std::erase_if(m_windows, [this](const auto &window) {
        return std::find(m_list.begin(), m_list.end(), window.first) == m_list.end();
    });
    std::vector<xcb_window_t> unknown;
    std::copy_if(m_list.begin(), m_list.end(), std::back_inserter(unknown),
                 [this](auto window) { return !m_windows.contains(window); });
    readWindows(unknown);
}

void X11Windows::readActive()
{
    m_active = 0;
    if (m_manager == 0)
        return;
    const auto &atoms = m_connection->atoms();
    const auto asked = askProperty(m_connection->root(), atoms.activeWindow, XCB_ATOM_WINDOW);
    m_active = firstOf<xcb_window_t>(property(asked));
}

std::vector<xcb_window_t> X11Windows::managedWindows()
{
    const auto cookie =
        xcb_get_property(m_connection->handle(), 0, m_connection->root(), m_connection->atoms().clientList,
                         XCB_ATOM_WINDOW, 0, longestWindowList);
    return valuesOf<xcb_window_t>(property(cookie));
}

std::vector<xcb_window_t> X11Windows::topWindows()
{
    auto *handle = m_connection->handle();
    const auto treeCookie = xcb_query_tree(handle, m_connection->root());
    const auto tree = m_connection->reply<xcb_query_tree_reply_t>(treeCookie.sequence);
    if (!tree)
        return {};
    const auto *children = xcb_query_tree_children(tree.get());
    std::vector<std::pair<xcb_window_t, unsigned int>> asked;
    for (int at = 0; at < xcb_query_tree_children_length(tree.get()); ++at)
        asked.emplace_back(children[at], xcb_get_window_attributes(handle, children[at]).sequence);
    std::vector<xcb_window_t> windows;
    for (const auto &[window, sequence] : asked) {
        const auto attributes = m_connection->reply<xcb_get_window_attributes_reply_t>(sequence);
        if (attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE && !attributes->override_redirect &&
            attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT)
            windows.push_back(window);
    }
    std::sort(windows.begin(), windows.end()); // the tree is in stacking order, which changes with a click
    return windows;
}

void X11Windows::readWindows(const std::vector<xcb_window_t> &windows)
{
    std::vector<Questions> asked;
    asked.reserve(windows.size());
    for (const auto window : windows)
        asked.push_back(askAbout(window));
    for (const auto &questions : asked) {
        auto window = answersAbout(questions);
        const auto known = m_windows.find(questions.window);
        const bool sameOwner =
            window && known != m_windows.end() && known->second.facts.processId == window->facts.processId;
        if (sameOwner)
            window->facts.seen = known->second.facts.seen;
        if (window)
            m_windows.insert_or_assign(questions.window, std::move(*window));
        else
            m_windows.erase(questions.window);
    }
    for (const auto window : windows) {
        const auto found = m_windows.find(window);
        if (found == m_windows.end() || found->second.facts.processId != 0)
            continue;
        // A dialog that tells nothing of itself belongs to the window it was opened for.
        const auto owner = m_windows.find(found->second.transientFor);
        const bool silent = found->second.facts.className.isEmpty() && found->second.facts.instance.isEmpty();
        if (silent && owner != m_windows.end())
            found->second.facts = owner->second.facts;
    }
}

X11Windows::Questions X11Windows::askAbout(xcb_window_t window)
{
    // First, so that no change is missed between the answers and the notices.
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(m_connection->handle(), window, XCB_CW_EVENT_MASK, &events);
    const auto &atoms = m_connection->atoms();
    const auto any = xcb_atom_t(XCB_GET_PROPERTY_TYPE_ANY);
    return {window,
            askProperty(window, XCB_ATOM_WM_CLASS, any),
            askProperty(window, atoms.wmPid, XCB_ATOM_CARDINAL),
            askProperty(window, XCB_ATOM_WM_CLIENT_MACHINE, any),
            askProperty(window, atoms.windowType, XCB_ATOM_ATOM),
            askProperty(window, atoms.gtkApplicationId, any),
            askProperty(window, atoms.kdeDesktopFile, any),
            askProperty(window, XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW),
            askProperty(window, atoms.wmProtocols, XCB_ATOM_ATOM),
            askClientProcess(window)};
}

std::optional<X11Windows::Window> X11Windows::answersAbout(const Questions &questions)
{
    const auto &atoms = m_connection->atoms();
    Window window;
    const auto classReply = m_connection->reply<xcb_get_property_reply_t>(questions.wmClass.sequence);
    const auto classes = classReply
                             ? QByteArray(static_cast<const char *>(xcb_get_property_value(classReply.get())),
                                          xcb_get_property_value_length(classReply.get()))
                                   .split('\0')
                             : QList<QByteArray>();
    const auto claimed = firstOf<qint32>(property(questions.pid));
    const auto machine = property(questions.machine);
    const auto types = valuesOf<xcb_atom_t>(property(questions.type));
    auto desktopFile = property(questions.gtkId);
    const auto kdeFile = property(questions.kdeFile);
    window.transientFor = firstOf<xcb_window_t>(property(questions.transientFor));
    const auto protocols = valuesOf<xcb_atom_t>(property(questions.protocols));
    const auto client = clientProcess(questions.client);
    if (!classReply)
        return std::nullopt; // gone already
    window.facts.seen = timeSinceBoot();
    window.facts.instance = decoded(classes.value(0));
    window.facts.className = decoded(classes.value(1));
    window.facts.processId = localProcess(client, claimed, upTo(machine, '\0'));
    if (desktopFile.isEmpty())
        desktopFile = kdeFile;
    window.facts.applicationId = decoded(upTo(desktopFile, '\0'));
    if (window.facts.applicationId.endsWith(".desktop"_L1))
        window.facts.applicationId.chop(8);
    window.closable = std::find(protocols.begin(), protocols.end(), atoms.wmDeleteWindow) != protocols.end();
    window.ordinary = std::none_of(types.begin(), types.end(), [&](xcb_atom_t type) {
        return type == atoms.typeDesktop || type == atoms.typeDock || type == atoms.typeNotification;
    });
    return window;
}

/// The process behind a window: the kernel's word about who opened the connection goes before the window's
/// own claim, which a sandboxed program states in its own numbering. A window that says it comes from another
/// host has none here, except where both agree: then this host was only renamed since.
qint32 X11Windows::localProcess(qint32 kernelSays, qint32 windowSays, const QByteArray &machine) const
{
    if (!isThisHost(machine, m_hostName))
        return kernelSays == windowSays ? qMax(kernelSays, 0) : 0;
    return qMax(kernelSays > 0 ? kernelSays : windowSays, 0);
}

xcb_get_property_cookie_t X11Windows::askProperty(xcb_window_t window, xcb_atom_t name, xcb_atom_t type)
{
    return xcb_get_property(m_connection->handle(), 0, window, name, type, 0, longestProperty);
}

QByteArray X11Windows::property(xcb_get_property_cookie_t cookie)
{
    const auto reply = m_connection->reply<xcb_get_property_reply_t>(cookie.sequence);
    if (!reply)
        return {};
    return {static_cast<const char *>(xcb_get_property_value(reply.get())),
            xcb_get_property_value_length(reply.get())};
}

unsigned int X11Windows::askClientProcess(xcb_window_t window)
{
    if (!m_connection->hasClientIds())
        return 0;
    const xcb_res_client_id_spec_t wanted{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    return xcb_res_query_client_ids(m_connection->handle(), 1, &wanted).sequence;
}

qint32 X11Windows::clientProcess(unsigned int sequence)
{
    const auto reply =
        sequence == 0 ? nullptr : m_connection->reply<xcb_res_query_client_ids_reply_t>(sequence);
    if (!reply)
        return 0;
    auto ids = xcb_res_query_client_ids_ids_iterator(reply.get());
    for (; ids.rem > 0; xcb_res_client_id_value_next(&ids)) {
        const bool isProcess = ids.data->spec.mask == XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID;
        if (isProcess && xcb_res_client_id_value_value_length(ids.data) > 0)
            return qint32(*xcb_res_client_id_value_value(ids.data));
    }
    return 0;
}

void X11Windows::sendMessage(xcb_window_t to, uint32_t mask, xcb_window_t window, xcb_atom_t type,
                             uint32_t first, uint32_t second)
{
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = type;
    message.data.data32[0] = first;
    message.data.data32[1] = second;
    xcb_send_event(m_connection->handle(), 0, to, mask, reinterpret_cast<const char *>(&message));
}
