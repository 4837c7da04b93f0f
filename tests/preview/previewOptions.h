#pragma once

#include "AppLanguage.h"
#include "ProductSection.h"
#include "Result.h"

#include <QSize>
#include <QString>
#include <QStringList>

/// What the program is doing in a picture.
enum class PreviewState {
    SignIn,       ///< nobody has entered
    CodeSent,     ///< nobody has entered, and a code is on its way
    Empty,        ///< a guest on the first day, without cards and tasks
    Ready,        ///< a guest with cards, between sessions
    Studying,     ///< in a session, with one card proven
    Locked,       ///< locked by hand
    Break,        ///< in a break that was earned
    CoachRunning, ///< with an account, while the coach is asked
    Pro,          ///< in a session, with Pro mode on
    NoEvents,     ///< ready, and nothing has happened yet
    Long,         ///< in a session, with names, numbers and lists as long as they get
};

/// What the desktop lets the program do in a picture.
enum class PreviewDesktop {
    Whole,   ///< everything
    Mixed,   ///< everything, but of the browsers only some are seen
    Nothing, ///< nothing
};

QList<PreviewState> allPreviewStates();
QString nameOf(PreviewState state);
QString nameOf(PreviewDesktop desktop);

/// What to show, and how.
struct PreviewOptions
{
    PreviewState state = PreviewState::Studying;
    PreviewDesktop desktop = PreviewDesktop::Whole;
    ProductSection section = ProductSection::Focus;
    AppLanguage language = AppLanguage::English;
    QSize size{1180, 820}; ///< of the window, in logical pixels
    double scale = 1;      ///< physical pixels for each logical one, 1 to 2.5
    bool full = false;     ///< the window is as tall as its page, where that is taller
    double scroll = 0;     ///< how far down the page is scrolled, in logical pixels
    bool software = false; ///< drawn without a graphics processor
    QString focus;         ///< accessible name of the control that has the keyboard; empty: none
    QString output;        ///< the picture's file; empty: a window to click around in
    bool texts = false;    ///< print every text in sight instead
    QString all;           ///< the folder that gets the whole set; empty: one picture
    bool help = false;
};

/// Reads the arguments of the command line, without the program's own name. Fails with a sentence that names
/// the argument that is wrong and what it can be.
Result<PreviewOptions> readPreviewOptions(const QStringList &arguments);

/// What the program prints for --help.
QString previewHelp();
