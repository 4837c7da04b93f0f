#include "X11Connection.h"

#include "displayName.h"
#include "socketPeer.h"
#include "x11Log.h"

#include <array>
#include <cstring>
#include <poll.h>
#include <vector>
#include <xcb/res.h>
#include <xcb/screensaver.h>
#include <xcb/xcbext.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// A server on this machine answers within 0.1 ms; a second's heartbeat must not be held up by one that hangs.
constexpr auto longestAnswer = 200ms;

struct AtomName
{
    xcb_atom_t X11Atoms::*place;
    const char *name;
};

constexpr std::array atomNames{
    AtomName{&X11Atoms::activeWindow, "_NET_ACTIVE_WINDOW"},
    AtomName{&X11Atoms::clientList, "_NET_CLIENT_LIST"},
    AtomName{&X11Atoms::supportingWmCheck, "_NET_SUPPORTING_WM_CHECK"},
    AtomName{&X11Atoms::closeWindow, "_NET_CLOSE_WINDOW"},
    AtomName{&X11Atoms::wmPid, "_NET_WM_PID"},
    AtomName{&X11Atoms::windowType, "_NET_WM_WINDOW_TYPE"},
    AtomName{&X11Atoms::typeDesktop, "_NET_WM_WINDOW_TYPE_DESKTOP"},
    AtomName{&X11Atoms::typeDock, "_NET_WM_WINDOW_TYPE_DOCK"},
    AtomName{&X11Atoms::typeNotification, "_NET_WM_WINDOW_TYPE_NOTIFICATION"},
    AtomName{&X11Atoms::gtkApplicationId, "_GTK_APPLICATION_ID"},
    AtomName{&X11Atoms::kdeDesktopFile, "_KDE_NET_WM_DESKTOP_FILE"},
    AtomName{&X11Atoms::wmProtocols, "WM_PROTOCOLS"},
    AtomName{&X11Atoms::wmDeleteWindow, "WM_DELETE_WINDOW"},
};

} // namespace

X11Connection::X11Connection(const QString &display, std::chrono::milliseconds longestOpening)
    : m_longestAnswer(longestOpening)
{
    const auto name = display.toLocal8Bit();
    m_display = displayName(name.isEmpty() ? qgetenv("DISPLAY") : name);
    int screen = 0;
    m_connection = xcb_connect(name.isEmpty() ? nullptr : name.constData(), &screen);
    m_lost = xcb_connection_has_error(m_connection) != 0;
    if (m_lost) {
        qCInfo(logX11) << "no X server answers on" << (name.isEmpty() ? qgetenv("DISPLAY") : name);
        return;
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
    while (screen-- > 0 && screens.rem > 1)
        xcb_screen_next(&screens);
    m_root = screens.data->root;
    m_serverProcess = peerProcess(xcb_get_file_descriptor(m_connection)).value_or(0);
    // The rest goes by what is learnt here, and it is not asked for again: better nothing than half of it.
    const bool learnt = learnAtoms() && learnExtensions();
    if (!learnt && !m_lost) {
        qCWarning(logX11) << "the X server did not tell what was asked of it while opening";
        noteLost();
    }
    m_longestAnswer = longestAnswer;
}

X11Connection::~X11Connection()
{
    xcb_disconnect(m_connection);
}

Availability X11Connection::availability() const
{
    if (m_lost)
        return Availability::missing(u"The X server of this desktop cannot be reached."_s,
                                     u"Нет связи с X-сервером этого рабочего стола."_s);
    if (m_overdue)
        return Availability::missing(u"The X server of this desktop does not answer."_s,
                                     u"X-сервер этого рабочего стола не отвечает."_s);
    return Availability::working();
}

bool X11Connection::usable()
{
    if (!m_lost && xcb_connection_has_error(m_connection) != 0)
        noteLost();
    if (m_lost || !m_overdue)
        return !m_lost;
    void *reply = nullptr;
    xcb_generic_error_t *error = nullptr;
    if (xcb_poll_for_reply(m_connection, *m_overdue, &reply, &error)) {
        free(reply);
        free(error);
        m_overdue.reset();
        qCInfo(logX11) << "the X server answers again";
    }
    return !m_overdue && xcb_connection_has_error(m_connection) == 0;
}

XcbPointer<xcb_generic_event_t> X11Connection::nextEvent()
{
    XcbPointer<xcb_generic_event_t> event(m_lost ? nullptr : xcb_poll_for_event(m_connection));
    if (!event && !m_lost && xcb_connection_has_error(m_connection) != 0)
        noteLost();
    return event;
}

void X11Connection::flush()
{
    if (!m_lost && xcb_flush(m_connection) <= 0)
        noteLost();
}

void *X11Connection::awaitReply(unsigned int sequence)
{
    if (m_lost)
        return nullptr;
    if (m_overdue) {
        ++m_missedAnswers;
        xcb_discard_reply(m_connection, sequence);
        return nullptr;
    }
    flush();
    const auto until = std::chrono::steady_clock::now() + m_longestAnswer;
    while (!m_lost) {
        void *reply = nullptr;
        xcb_generic_error_t *error = nullptr;
        if (xcb_poll_for_reply(m_connection, sequence, &reply, &error)) {
            if (error && error->error_code == XCB_ALLOC)
                ++m_missedAnswers; // as good as none: the server was short of memory
            free(error);           // windows vanish between two requests all the time
            if (!reply && xcb_connection_has_error(m_connection) != 0)
                noteLost();
            return reply;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            m_overdue = sequence;
            ++m_missedAnswers;
            qCWarning(logX11) << "the X server does not answer";
            return nullptr;
        }
        pollfd waiting{xcb_get_file_descriptor(m_connection), POLLIN, 0};
        poll(&waiting, 1, int(left.count()));
    }
    return nullptr;
}

bool X11Connection::learnAtoms()
{
    std::vector<xcb_intern_atom_cookie_t> cookies;
    for (const auto &atom : atomNames)
        cookies.push_back(xcb_intern_atom(m_connection, 0, uint16_t(strlen(atom.name)), atom.name));
    bool all = true;
    for (size_t at = 0; at < cookies.size(); ++at) {
        const auto answer = reply<xcb_intern_atom_reply_t>(cookies[at].sequence);
        m_atoms.*atomNames[at].place = answer ? answer->atom : 0;
        all = all && answer && answer->atom != 0;
    }
    return all;
}

bool X11Connection::learnExtensions()
{
    xcb_prefetch_extension_data(m_connection, &xcb_screensaver_id);
    xcb_prefetch_extension_data(m_connection, &xcb_res_id);
    // libxcb waits for these two without an end; they are there once a later question is answered.
    const auto later = xcb_get_input_focus(m_connection).sequence;
    if (!reply<xcb_get_input_focus_reply_t>(later))
        return false;
    const auto present = [this](xcb_extension_t *extension) {
        const auto *data = xcb_get_extension_data(m_connection, extension);
        return data && data->present;
    };
    m_hasScreenSaver = present(&xcb_screensaver_id);
    if (!m_hasScreenSaver)
        qCInfo(logX11) << "the X server has no screen-saver extension: idle time is unknown";
    if (!present(&xcb_res_id))
        return true;
    const auto cookie = xcb_res_query_version(m_connection, 1, 2);
    const auto version = reply<xcb_res_query_version_reply_t>(cookie.sequence);
    m_hasClientIds = version && std::pair(version->server_major, version->server_minor) >=
                                    std::pair<uint16_t, uint16_t>(1, 2);
    return version != nullptr;
}

void X11Connection::noteLost()
{
    m_lost = true;
    qCWarning(logX11) << "the connection to the X server is lost";
}
