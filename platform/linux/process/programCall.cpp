#include "programCall.h"

#include "DesktopEntry.h"

#include <QRegularExpression>
#include <QSet>

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

/// Index of the first word from `from` on that is neither an option nor a variable's assignment.
qsizetype firstOperand(const QStringList &words, qsizetype from)
{
    for (; from < words.size(); ++from) {
        const auto &word = words[from];
        const auto slash = word.indexOf(u'/');
        const auto equals = word.indexOf(u'=');
        const bool assignment = equals > 0 && (slash < 0 || equals < slash);
        if (!word.startsWith(u'-') && !assignment)
            break;
    }
    return from;
}

ProgramCall namedBy(const QString &option, const QStringList &words)
{
    const auto at = words.indexOf(option);
    if (at < 0 || at + 1 >= words.size())
        return {};
    return {words[at + 1], words.sliced(at + 2), {}, {}, true};
}

ProgramCall interpretedCall(const QStringList &words)
{
    const auto name = baseName(words[0]);
    const auto operand = firstOperand(words, 1);
    const auto options = words.first(operand);
    if (isShell(name) && options.contains("-c"_L1)) {
        // A simple command behind "sh -c" is that command; anything with shell syntax stays unknown.
        static const QRegularExpression syntax(u"[;&|<>`$(){}]"_s);
        const auto line = words.value(options.indexOf("-c"_L1) + 1);
        if (line.contains(syntax))
            return {};
        auto inner = splitCommand(line);
        return inner.isEmpty() || isShell(baseName(inner[0])) ? ProgramCall{} : effectiveCall(inner);
    }
    if (options.contains("-c"_L1) || options.contains("-e"_L1))
        return {};
    if (options.contains("-m"_L1))
        return namedBy(u"-m"_s, words);
    if (options.contains("-jar"_L1))
        return namedBy(u"-jar"_s, words);
    if (operand >= words.size())
        return {};
    return {words[operand], words.sliced(operand + 1), {}, {}, true};
}

} // namespace

ProgramCall effectiveCall(const QStringList &command)
{
    if (command.isEmpty() || command[0].isEmpty())
        return {};
    const auto name = baseName(command[0]);
    if (isInterpreter(name))
        return interpretedCall(command);
    if (isPrefix(name))
        return effectiveCall(command.sliced(firstOperand(command, 1)));
    const bool runs = command.value(1) == "run"_L1;
    const auto operand = firstOperand(command, 2);
    if (runs && name == "flatpak"_L1)
        return {{}, command.sliced(qMin(operand + 1, command.size())), command.value(operand), {}, false};
    if (runs && name == "snap"_L1)
        return {{}, command.sliced(qMin(operand + 1, command.size())), {}, command.value(operand), false};
    return {command[0], command.sliced(1), {}, {}, false};
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
