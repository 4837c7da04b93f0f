#include "programCall.h"

#include "DesktopEntry.h"

#include <QHash>
#include <QRegularExpression>
#include <QSet>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

bool isShell(const QString &name)
{
    static const QSet<QString> shells{u"sh"_s,  u"bash"_s, u"dash"_s, u"zsh"_s,    u"ksh"_s,
                                      u"ash"_s, u"fish"_s, u"mksh"_s, u"busybox"_s};
    return shells.contains(name);
}

/// Programs that start the command which follows their own options.
bool isPrefix(const QString &name)
{
    static const QSet<QString> prefixes{u"env"_s,
                                        u"nice"_s,
                                        u"ionice"_s,
                                        u"nohup"_s,
                                        u"setsid"_s,
                                        u"stdbuf"_s,
                                        u"exec"_s,
                                        u"dbus-run-session"_s,
                                        u"dbus-launch"_s,
                                        u"firejail"_s,
                                        u"gamemoderun"_s,
                                        u"mangohud"_s,
                                        u"prime-run"_s,
                                        u"primusrun"_s,
                                        u"optirun"_s,
                                        u"systemd-run"_s,
                                        u"systemd-inhibit"_s,
                                        u"catchsegv"_s,
                                        u"pkexec"_s};
    return prefixes.contains(name);
}

/// The options of a prefix that take the next word as their value: "nice -n 10 app" runs "app".
const QSet<QString> &optionsWithValue(const QString &prefix)
{
    static const QHash<QString, QSet<QString>> options{
        {u"env"_s, {u"-u"_s, u"--unset"_s, u"-C"_s, u"--chdir"_s}},
        {u"nice"_s, {u"-n"_s, u"--adjustment"_s}},
        {u"ionice"_s, {u"-c"_s, u"--class"_s, u"-n"_s, u"--classdata"_s}},
        {u"stdbuf"_s, {u"-i"_s, u"--input"_s, u"-o"_s, u"--output"_s, u"-e"_s, u"--error"_s}},
        {u"exec"_s, {u"-a"_s}},
        {u"dbus-run-session"_s, {u"--config-file"_s, u"--dbus-daemon"_s}},
        {u"systemd-run"_s,
         {u"-p"_s, u"--property"_s, u"-u"_s, u"--unit"_s, u"-E"_s, u"--setenv"_s, u"--slice"_s,
          u"--description"_s, u"--uid"_s, u"--gid"_s, u"--nice"_s, u"--working-directory"_s,
          u"--service-type"_s}},
        {u"systemd-inhibit"_s, {u"--what"_s, u"--who"_s, u"--why"_s, u"--mode"_s}},
        {u"pkexec"_s, {u"--user"_s}},
    };
    static const QSet<QString> none;
    const auto found = options.constFind(prefix);
    return found == options.cend() ? none : *found;
}

/// Index of the first word from `from` on that is neither an option, the value of one, nor a variable's
/// assignment; at most the number of words.
qsizetype firstOperand(const QStringList &words, qsizetype from, const QSet<QString> &withValue = {})
{
    for (; from < words.size(); ++from) {
        const auto &word = words[from];
        const auto slash = word.indexOf(u'/');
        const auto equals = word.indexOf(u'=');
        const bool assignment = equals > 0 && (slash < 0 || equals < slash);
        if (withValue.contains(word))
            ++from;
        else if (!word.startsWith(u'-') && !assignment)
            break;
    }
    return qMin(from, words.size());
}

ProgramCall namedBy(const QString &option, const QStringList &words)
{
    const auto at = words.indexOf(option);
    if (at < 0 || at + 1 >= words.size())
        return {};
    return {words[at + 1], words.sliced(at + 2), true};
}

/// What an interpreter, the first of the words, runs.
ProgramCall interpretedCall(const QStringList &words)
{
    const auto operand = firstOperand(words, 1);
    const auto options = words.first(operand);
    if (options.contains("-c"_L1) || options.contains("-e"_L1))
        return {};
    if (options.contains("-m"_L1))
        return namedBy(u"-m"_s, words);
    if (options.contains("-jar"_L1))
        return namedBy(u"-jar"_s, words);
    if (operand >= words.size())
        return {};
    return {words[operand], words.sliced(operand + 1), true};
}

/// The words behind all prefixes: "env A=b nice app" is "app".
QStringList withoutPrefixes(const QStringList &words)
{
    qsizetype at = 0;
    while (at < words.size()) {
        const auto name = baseName(words[at]);
        if (!isPrefix(name))
            break;
        at = firstOperand(words, at + 1, optionsWithValue(name));
    }
    return words.sliced(at);
}

/// The words of a simple command behind "sh -c"; none for another call, and none that can be told where the
/// command has a shell's syntax or runs a shell itself.
std::optional<QStringList> shellCommand(const QStringList &words)
{
    const auto options = words.first(firstOperand(words, 1));
    if (!isShell(baseName(words[0])) || !options.contains("-c"_L1))
        return std::nullopt;
    static const QRegularExpression syntax(u"[;&|<>`$(){}]"_s);
    const auto line = words.value(options.indexOf("-c"_L1) + 1);
    if (line.contains(syntax))
        return QStringList();
    const auto inner = splitCommand(line);
    return inner.isEmpty() || isShell(baseName(inner[0])) ? QStringList() : inner;
}

} // namespace

ProgramCall effectiveCall(const QStringList &command)
{
    auto words = withoutPrefixes(command);
    while (!words.isEmpty()) {
        const auto inner = shellCommand(words);
        if (!inner)
            break;
        words = withoutPrefixes(*inner); // each is shorter than the one it stands in
    }
    if (words.isEmpty() || words[0].isEmpty())
        return {};
    const auto name = baseName(words[0]);
    if (isInterpreter(name))
        return interpretedCall(words);
    // A store's application is known by other marks than its program.
    if (words.value(1) == "run"_L1 && (name == "flatpak"_L1 || name == "snap"_L1))
        return {{}, words.sliced(qMin(firstOperand(words, 2) + 1, words.size())), false};
    return {words[0], words.sliced(1), false};
}

QString baseName(const QString &path)
{
    return path.sliced(path.lastIndexOf(u'/') + 1);
}

bool isInterpreter(const QString &programName)
{
    if (isShell(programName))
        return true;
    static const QRegularExpression versioned(
        u"^(?:python|pypy|perl|ruby|node|nodejs|lua|luajit|php|electron|tclsh|wish|guile|java|qml|mono)[0-9.]*$"_s);
    static const QSet<QString> others{u"gjs"_s,           u"gjs-console"_s, u"deno"_s,  u"bun"_s,
                                      u"dotnet"_s,        u"qmlscene"_s,    u"wine"_s,  u"wine64"_s,
                                      u"Rscript"_s,       u"mono-sgen"_s,   u"javaw"_s, u"wine64-preloader"_s,
                                      u"wine-preloader"_s};
    return others.contains(programName) || versioned.match(programName).hasMatch();
}

bool isLauncher(const QString &programName)
{
    static const QSet<QString> others{u"bwrap"_s,        u"flatpak"_s, u"xdg-dbus-proxy"_s,
                                      u"snap-confine"_s, u"snap"_s,    u"sudo"_s,
                                      u"su"_s,           u"timeout"_s};
    return isShell(programName) || isPrefix(programName) || others.contains(programName);
}

bool isCommonProgramName(const QString &programName)
{
    static const QSet<QString> common{
        u"main"_s,     u"main.py"_s,  u"main.js"_s,   u"app"_s,      u"app.py"_s,      u"app.asar"_s,
        u"app.js"_s,   u"index.js"_s, u"run"_s,       u"run.sh"_s,   u"run.py"_s,      u"start"_s,
        u"start.sh"_s, u"launch"_s,   u"launch.sh"_s, u"launcher"_s, u"launcher.sh"_s, u"AppRun"_s,
        u"exe"_s,      u"java"_s,     u"game"_s,      u"client"_s,   u"server"_s,      u"__main__.py"_s};
    return programName.isEmpty() || common.contains(programName);
}
