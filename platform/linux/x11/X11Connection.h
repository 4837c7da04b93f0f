#pragma once

#include "Availability.h"

#include <QString>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <xcb/xcb.h>

/// Memory that libxcb hands over.
template <typename Type>
struct FreeXcb
{
    void operator()(Type *memory) const { free(memory); }
};
template <typename Type>
using XcbPointer = std::unique_ptr<Type, FreeXcb<Type>>;

/// Atoms that the adapters speak of, by the names they have on the wire.
struct X11Atoms
{
    xcb_atom_t activeWindow = 0, clientList = 0, supportingWmCheck = 0, closeWindow = 0, wmPid = 0,
               windowType = 0, typeDesktop = 0, typeDock = 0, typeNotification = 0, gtkApplicationId = 0,
               kdeDesktopFile = 0, wmProtocols = 0, wmDeleteWindow = 0;
};

/// A connection to an X server that never makes its user wait: a server that does not answer in time counts
/// as absent until its answers come after all.
class X11Connection
{
public:
    /// `display` as in DISPLAY; empty for that variable's value. Opening waits for the server's greeting as
    /// long as it takes, and for each answer after it `longestOpening`; a server that falls silent or refuses
    /// in between counts as gone for good, for what is learnt then is not asked for again.
    explicit X11Connection(const QString &display = {},
                           std::chrono::milliseconds longestOpening = std::chrono::seconds(10));
    ~X11Connection();
    X11Connection(const X11Connection &) = delete;
    X11Connection &operator=(const X11Connection &) = delete;

    /// Missing once the server is gone or as long as it does not answer.
    Availability availability() const;

    /// Whether requests may be sent: connected and answering. Cheap; takes note of a server that is gone.
    bool usable();

    xcb_connection_t *handle() const { return m_connection; }
    QString display() const { return m_display; } ///< as displayName() gives it
    xcb_window_t root() const { return m_root; }
    const X11Atoms &atoms() const { return m_atoms; }
    qint32 serverProcess() const { return m_serverProcess; } ///< 0 where it is not on this machine

    bool hasScreenSaver() const { return m_hasScreenSaver; }
    bool hasClientIds() const { return m_hasClientIds; } ///< the X-Resource extension from version 1.2 on

    /// The reply to a request; none for an error or where the server does not answer in time.
    template <typename Reply>
    XcbPointer<Reply> reply(unsigned int sequence)
    {
        return XcbPointer<Reply>(static_cast<Reply *>(awaitReply(sequence)));
    }

    /// Grows with every answer that did not come in time or for want of memory: what was learnt from such a
    /// round is incomplete.
    quint64 missedAnswers() const { return m_missedAnswers; }

    /// The next event that has arrived; none where there is none. Never waits.
    XcbPointer<xcb_generic_event_t> nextEvent();

    void flush();

private:
    void *awaitReply(unsigned int sequence);
    bool learnAtoms();      ///< whether all are known
    bool learnExtensions(); ///< whether the server told which it has
    void noteLost();

    xcb_connection_t *m_connection = nullptr;
    QString m_display;
    xcb_window_t m_root = 0;
    X11Atoms m_atoms;
    qint32 m_serverProcess = 0;
    bool m_hasScreenSaver = false;
    bool m_hasClientIds = false;
    bool m_lost = true;
    std::chrono::milliseconds m_longestAnswer; ///< longer while opening
    quint64 m_missedAnswers = 0;
    std::optional<unsigned int> m_overdue; ///< a request whose answer the server owes us
};
