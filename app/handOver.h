#pragma once

#include <QByteArray>
#include <QStringList>

#include <chrono>

/// How a second start tells the first one its arguments: the message's length as four bytes, the highest
/// first, then the arguments as a JSON list of texts. The first answers with `handOverConfirmation` once its
/// window is up.
inline constexpr qint64 longestHandOver = 64 * 1024; ///< bytes, without the four of the length
inline constexpr char handOverConfirmation = '+';

/// The message of the arguments, its length in front. Where it would be longer than allowed it is without
/// them, but for a bare "quorvel:" where one of them was such an address: nothing that long is a sign-in, and
/// the first start is to say that it failed.
QByteArray writeHandOver(const QStringList &arguments);

/// What the bytes that have come so far are.
struct ReadHandOver
{
    enum class State { Incomplete, Complete, Broken };
    State state = State::Incomplete;
    QStringList arguments; ///< of a complete message
};
ReadHandOver readHandOver(const QByteArray &bytes);

/// Gives `arguments` to the program that listens at the socket `path`; true once it has confirmed. Waits
/// `patience` at most. Needs no application object.
bool handOver(const QByteArray &path, const QStringList &arguments, std::chrono::milliseconds patience);
