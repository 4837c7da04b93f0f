#include "Relay.h"

#include "companionIdentity.h"
#include "complain.h"
#include "privateFolder.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>

namespace {

constexpr std::string_view away = R"({"type":"away"})";

/// What went wrong, apart from there being no program; empty where nothing did.
std::string problemOf(ProgramSocket::Outcome outcome)
{
    switch (outcome) {
    case ProgramSocket::Outcome::Stranger:
        return "the program's socket belongs to another user";
    case ProgramSocket::Outcome::Busy:
        return "the program takes no further connection";
    case ProgramSocket::Outcome::Impossible:
        return "the program's socket cannot be reached: its path is too long, or too many files are open";
    case ProgramSocket::Outcome::Connected:
    case ProgramSocket::Outcome::Nobody:
        break;
    }
    return {};
}

} // namespace

Relay::Relay(int fromBrowser, int toBrowser)
    : m_fromBrowser(fromBrowser)
    , m_toBrowser(toBrowser)
    , m_folder(companionSocketName)
    , m_schedule(Clock::now())
    , m_bytes(FrameLane::room)
{}

int Relay::run()
{
    lookForProgram();
    if (!m_program.isOpen())
        tellAway();
    while (!m_end) {
        writeAll();
        judgeFrames();
        if (!m_end)
            waitAndRead();
        // With a browser that reads nothing this would only add one `away` to the next.
        if (!m_program.isOpen() && m_programToBrowser.hasRoom() && m_schedule.due() <= Clock::now())
            lookForProgram();
    }
    return *m_end;
}

void Relay::lookForProgram()
{
    const auto outcome = tryFolder();
    if (const auto problem = problemOf(outcome); !problem.empty())
        complainOnce(problem);
    const auto now = Clock::now();
    if (outcome == ProgramSocket::Outcome::Connected) {
        m_connectedAt = now;
        m_socketIsNewer = false;
        m_programListens = true;
        m_programToBrowser.beginAnew();
    } else if (outcome == ProgramSocket::Outcome::Nobody) {
        m_schedule.foundNobody(now);
    } else {
        m_schedule.lost(now, false);
    }
}

ProgramSocket::Outcome Relay::tryFolder()
{
    const auto folder = privateFolder();
    if (!folder.usable()) {
        complainOnce("the folder \"" + folder.path + "\" cannot be used: " + folder.problem);
        return ProgramSocket::Outcome::Nobody;
    }
    // Watched before it is looked at, so that nothing appears unseen in between.
    if (!m_folder.watch(folder.path))
        complainOnce("the folder \"" + folder.path + "\" cannot be watched: " + strerror(errno));
    return m_program.connect(folder.path + "/" + companionSocketName);
}

void Relay::writeAll()
{
    if (m_programListens && !m_browserToProgram.waiting().empty()) {
        const auto put = writeSome(m_program.descriptor(), m_browserToProgram.waiting());
        if (put)
            m_browserToProgram.written(*put);
        else
            m_programListens = false; // what it said before it went may still be to be read
    }
    if (!m_programListens)
        m_browserToProgram.dropFrames();
    if (!m_programToBrowser.waiting().empty()) {
        const auto put = writeSome(m_toBrowser, m_programToBrowser.waiting());
        if (put)
            m_programToBrowser.written(*put);
        else
            m_end = 0;
    }
}

void Relay::waitAndRead()
{
    const auto wanted = [](bool reading, bool writing) {
        return short((reading ? POLLIN : 0) | (writing ? POLLOUT : 0));
    };
    const bool browserWaits = !m_programToBrowser.waiting().empty();
    const bool programWaits = m_programListens && !m_browserToProgram.waiting().empty();
    const short ofProgram = wanted(m_programToBrowser.hasRoom(), programWaits);
    pollfd watched[] = {
        {m_fromBrowser, wanted(m_browserToProgram.hasRoom(), false), 0},
        {m_toBrowser, wanted(false, browserWaits), 0},
        // poll() tells of an end that nobody asked for, again and again: its time comes when there is room.
        {ofProgram != 0 ? m_program.descriptor() : -1, ofProgram, 0},
        {m_folder.descriptor(), POLLIN, 0},
    };
    if (poll(watched, std::size(watched), millisecondsToWait()) <= 0)
        return;
    constexpr short gone = POLLHUP | POLLERR | POLLNVAL;
    const auto &[fromBrowser, toBrowser, program, folder] = watched;
    if ((program.revents & (POLLIN | gone)) != 0 && m_programToBrowser.hasRoom())
        readProgram();
    if ((folder.revents & POLLIN) != 0 && m_folder.takeNews()) {
        m_schedule.somethingNew(Clock::now());
        m_socketIsNewer = true;
    }
    if ((fromBrowser.revents & POLLIN) != 0)
        readBrowser();
    else if ((fromBrowser.revents & gone) != 0 || (toBrowser.revents & gone) != 0)
        m_end = 0;
}

int Relay::millisecondsToWait() const
{
    if (m_program.isOpen() || !m_programToBrowser.hasRoom())
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_schedule.due() - Clock::now());
    return int(std::max(left.count(), std::chrono::milliseconds::rep(0)));
}

void Relay::readBrowser()
{
    const auto got = readSome(m_fromBrowser, m_bytes.data(), m_bytes.size());
    if (!got) {
        m_end = 0;
        return;
    }
    m_browserToProgram.take({m_bytes.data(), *got});
    if (!m_programListens)
        m_browserToProgram.dropFrames();
}

void Relay::readProgram()
{
    const auto got = readSome(m_program.descriptor(), m_bytes.data(), m_bytes.size());
    if (got)
        m_programToBrowser.take({m_bytes.data(), *got});
    else
        loseProgram();
}

void Relay::judgeFrames()
{
    if (m_browserToProgram.broken()) {
        complain("the browser sent a message that is empty or too long");
        m_end = 1;
    }
    if (m_programToBrowser.broken()) {
        complain("the program sent a message that is empty or too long");
        loseProgram();
    }
}

void Relay::loseProgram()
{
    const auto now = Clock::now();
    // A program that speaks another version says a word each time before it closes: that is not enough.
    m_schedule.lost(now, m_programToBrowser.carriedFrame() &&
                             now - m_connectedAt >= AttemptSchedule::longestPause);
    if (m_socketIsNewer)
        m_schedule.somethingNew(now);
    m_program.close();
    m_programListens = false;
    m_browserToProgram.dropFrames();
    m_programToBrowser.beginAnew();
    m_complaints.clear();
    tellAway();
}

void Relay::tellAway()
{
    m_programToBrowser.put(away);
}

void Relay::complainOnce(const std::string &problem)
{
    if (m_complaints.insert(problem).second)
        complain(problem);
}
