#pragma once

#include "X11Connection.h"
#include "applicationGroups.h"

#include <memory>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <vector>

/// The windows of an X server, kept from the server's own notices: as long as nothing changes, nothing is
/// asked.
///
/// With a window manager these are the windows it manages; without one, the visible windows that lie on the
/// root themselves, and no window is known to be active.
class X11Windows
{
public:
    explicit X11Windows(std::shared_ptr<X11Connection> connection);

    /// Takes in what the server has told since; says whether anything changed.
    bool update();

    /// Applications' windows, in the order of their appearance.
    std::vector<WindowFacts> windows() const;

    /// The window that has the focus by the window manager's word; none where there is none.
    std::optional<WindowFacts> active() const;

    /// Processes that belong to the session: the X server and the window manager. 0 is not among them.
    std::unordered_set<qint32> sessionProcesses() const;

    /// Asks every window of these processes to close that can be asked; gives the number of those.
    int closeWindowsOf(const std::vector<ProcessKey> &processes);

private:
    struct Window
    {
        WindowFacts facts;
        xcb_window_t transientFor = 0;
        bool ordinary = true;  ///< no dock, desktop or notification
        bool closable = false; ///< takes part in WM_DELETE_WINDOW
    };
    struct Questions;

    void takeEvent(const xcb_generic_event_t &event);
    void takeError(const xcb_generic_error_t &error);
    void startAnew();
    void takePropertyChange(const xcb_property_notify_event_t &change);
    void readManager();
    void readList();
    void readActive();
    std::vector<xcb_window_t> managedWindows();
    std::vector<xcb_window_t> topWindows();
    void readWindows(const std::vector<xcb_window_t> &windows);
    Questions askAbout(xcb_window_t window);
    std::optional<Window> answersAbout(const Questions &questions);
    qint32 localProcess(qint32 kernelSays, qint32 windowSays, const QByteArray &machine) const;
    xcb_get_property_cookie_t askProperty(xcb_window_t window, xcb_atom_t name, xcb_atom_t type);
    QByteArray property(xcb_get_property_cookie_t cookie);
    unsigned int askClientProcess(xcb_window_t window);
    qint32 clientProcess(unsigned int sequence);
    void sendMessage(xcb_window_t to, uint32_t mask, xcb_window_t window, xcb_atom_t type, uint32_t first,
                     uint32_t second);

    std::shared_ptr<X11Connection> m_connection;
    QByteArray m_hostName;
    std::vector<xcb_window_t> m_list;
    std::unordered_map<xcb_window_t, Window> m_windows; ///< those of m_list
    std::set<xcb_window_t> m_stale;                     ///< windows whose properties changed
    xcb_window_t m_active = 0;
    xcb_window_t m_manager = 0; ///< the window by which a window manager shows itself; 0 without one
    qint32 m_managerProcess = 0;
    bool m_managerStale = true;
    bool m_listStale = true;
    bool m_activeStale = true;
};
