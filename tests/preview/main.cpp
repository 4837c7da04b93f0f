// Shows the window with made-up data, in any state, and makes pictures of it.
#include "PictureDisplay.h"
#include "PreviewWindow.h"
#include "QmlWarnings.h"
#include "pictureSet.h"
#include "setUpInterface.h"
#include "windowTexts.h"

#include <QDir>
#include <QGuiApplication>
#include <QTextStream>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

int fail(const QString &reason)
{
    fprintf(stderr, "quorvel-preview: %s\n", qPrintable(reason));
    return 1;
}

/// The time of an event is written as the desktop writes times; these are desktops of either language.
void setLocale(AppLanguage language)
{
    qputenv("LC_ALL", language == AppLanguage::Russian ? "ru_RU.UTF-8" : "en_US.UTF-8");
}

Result<> prepare(PreviewWindow &window, const PreviewOptions &options)
{
    if (options.full) {
        if (const auto grown = window.growToPage(); !grown)
            return grown;
    }
    if (const auto scrolled = window.scrollTo(options.scroll); !scrolled)
        return scrolled;
    return options.focus.isEmpty() ? Result<>(Done{}) : window.focus(options.focus);
}

void printTexts(PreviewWindow &window)
{
    QTextStream out(stdout);
    for (const auto &text : windowTexts(window.content())) {
        out << text.text.simplified() << "\t" << qRound(text.seen.x()) << "\t" << qRound(text.seen.y())
            << "\n";
    }
}

Result<> makePicture(PreviewWindow &window, const PreviewOptions &options)
{
    if (const auto drawn = window.drawAnew(); !drawn)
        return drawn;
    if (const auto prepared = prepare(window, options); !prepared)
        return prepared;
    if (options.texts) {
        printTexts(window);
        return Done{};
    }
    const auto picture = window.grab();
    return picture ? writePicture(picture.value(), options.output) : Result<>(picture.failure());
}

int runWindow(int argc, char **argv, const PreviewOptions &options)
{
    setLocale(options.language);
    if (options.scale != 1)
        qputenv("QT_SCALE_FACTOR", QByteArray::number(options.scale));
    if (options.software)
        QQuickWindow::setSceneGraphBackend(u"software"_s);
    QmlWarnings warnings;
    setUpDrawing();
    QGuiApplication application(argc, argv);
    PreviewScene scene(options.state, options.desktop, options.language);
    PreviewWindow window(scene, options.section, options.size);
    if (options.output.isEmpty() && !options.texts) {
        if (const auto prepared = prepare(window, options); !prepared)
            return fail(prepared.reason());
        return QGuiApplication::exec();
    }
    scene.standStill();
    if (const auto made = makePicture(window, options); !made)
        return fail(made.reason());
    return warnings.take().isEmpty() ? 0 : fail(u"The window is not as its files say."_s);
}

/// One process for each picture: the scale is the whole application's.
int makeSet(const QString &program, const QString &folder)
{
    if (!QDir().mkpath(folder))
        return fail(u"%1 cannot be made."_s.arg(folder));
    for (const auto &picture : pictureSet()) {
        const auto path = QDir(folder).filePath(picture.name);
        if (QProcess::execute(program, picture.arguments + QStringList{u"--output"_s, path}) != 0)
            return fail(u"%1 was not made."_s.arg(path));
        if (const auto calmed = writePicture(calm(QImage(path)), path); !calmed)
            return fail(calmed.reason());
        printf("%s\n", qPrintable(path));
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int index = 1; index < argc; ++index)
        arguments.append(QString::fromLocal8Bit(argv[index]));
    const auto options = readPreviewOptions(arguments);
    if (!options) {
        fail(options.reason());
        fprintf(stderr, "quorvel-preview --help explains the options.\n");
        return 2;
    }
    if (options.value().help) {
        printf("%s", qPrintable(previewHelp()));
        return 0;
    }
    if (!options.value().all.isEmpty())
        return makeSet(QString::fromLocal8Bit(argv[0]), options.value().all);
    if (options.value().output.isEmpty() && !options.value().texts)
        return runWindow(argc, argv, options.value());
    const PictureDisplay display;
    if (!display.works())
        return fail(u"Xvfb, on which pictures are drawn, does not start."_s);
    return runWindow(argc, argv, options.value());
}
