#include "PointerAndKeys.h"

#include "patience.h"

#include <QDeadlineTimer>

using namespace Qt::StringLiterals;

QString PointerAndKeys::window(const QString &title) const
{
    return m_desktop
        .run(u"xdotool"_s,
             {u"search"_s, u"--onlyvisible"_s, u"--name"_s, QString(title).replace(u"."_s, u"\\."_s)})
        .section(u'\n', 0, 0);
}

QString PointerAndKeys::front() const
{
    return m_desktop.run(u"xdotool"_s, {u"getactivewindow"_s, u"getwindowname"_s});
}

void PointerAndKeys::bringToFront(const QString &title) const
{
    // A title follows the page late, and a new window is off the screen while it is framed.
    const QDeadlineTimer deadline(patience);
    auto number = window(title);
    while (number.isEmpty() && !deadline.hasExpired())
        number = window(title);
    m_desktop.run(u"xdotool"_s, {u"windowactivate"_s, u"--sync"_s, number});
}

void PointerAndKeys::clickInto(const QString &title) const
{
    const auto number = window(title);
    m_desktop.run(u"xdotool"_s,
                  {u"mousemove"_s, u"--window"_s, number, u"--polar"_s, u"0"_s, u"0"_s, u"click"_s, u"1"_s});
}

void PointerAndKeys::press(const QString &key) const
{
    m_desktop.run(u"xdotool"_s, {u"key"_s, key});
}
