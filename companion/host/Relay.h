#pragma once

#include "AttemptSchedule.h"
#include "FolderWatch.h"
#include "FrameLane.h"
#include "ProgramSocket.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

/// Passes frames on between the browser that started it and the program, and waits for the program while it
/// is away. One thread; it sleeps in poll() and wakes only when one of its descriptors or a pause has come
/// due.
class Relay
{
public:
    /// `fromBrowser` and `toBrowser` are open and do not wait.
    Relay(int fromBrowser, int toBrowser);

    /// Until the browser ends the connection: 0; 1 where it sent a frame out of bounds.
    int run();

private:
    using Clock = AttemptSchedule::Clock;

    void lookForProgram();
    ProgramSocket::Outcome tryFolder();
    void writeAll();
    void waitAndRead();
    int millisecondsToWait() const;
    void readBrowser();
    void readProgram();
    void judgeFrames();
    void loseProgram();
    void tellAway();
    void complainOnce(const std::string &problem);

    int m_fromBrowser;
    int m_toBrowser;
    ProgramSocket m_program;
    FolderWatch m_folder;
    AttemptSchedule m_schedule;
    Clock::time_point m_connectedAt;

    FrameLane m_browserToProgram{longestFrameFromBrowser};
    FrameLane m_programToBrowser{longestFrameToBrowser};
    bool m_programListens = false; ///< false also while only its last messages are read
    bool m_socketIsNewer = false;  ///< another one has appeared since this connection was made

    std::vector<char> m_bytes;
    std::set<std::string> m_complaints; ///< made since there last was a connection
    std::optional<int> m_end;           ///< the exit code, once there is one
};
