#include "previewOptions.h"

#include <QCommandLineParser>

using namespace Qt::StringLiterals;

namespace {

constexpr int smallestSide = 200;
constexpr int largestSide = 8000;

QStringList namesOf(const auto &values, auto nameOfOne)
{
    QStringList names;
    for (const auto &value : values)
        names.append(nameOfOne(value));
    return names;
}

const QList<PreviewDesktop> allDesktops{PreviewDesktop::Whole, PreviewDesktop::Mixed,
                                        PreviewDesktop::Nothing};

QStringList stateNames()
{
    return namesOf(allPreviewStates(), [](PreviewState state) { return nameOf(state); });
}

QStringList desktopNames()
{
    return namesOf(allDesktops, [](PreviewDesktop desktop) { return nameOf(desktop); });
}

QStringList sectionNames()
{
    return namesOf(allProductSections, [](ProductSection section) { return rawValue(section); });
}

Failure wrong(const QString &option, const QString &given, const QString &allowed)
{
    return {u"--%1 cannot be \"%2\": it is %3."_s.arg(option, given, allowed)};
}

Failure notAmong(const QString &option, const QString &given, const QStringList &names)
{
    return wrong(option, given, u"one of "_s + names.join(u", "_s));
}

Result<QSize> readSize(const QString &text)
{
    const auto sides = text.split(u'x');
    bool isWidth = false;
    bool isHeight = false;
    const QSize size(sides.value(0).toInt(&isWidth), sides.value(1).toInt(&isHeight));
    const QSize smallest(smallestSide, smallestSide);
    const QSize largest(largestSide, largestSide);
    if (sides.size() != 2 || !isWidth || !isHeight || size.expandedTo(smallest).boundedTo(largest) != size)
        return wrong(u"size"_s, text, u"WIDTHxHEIGHT, each from 200 to 8000"_s);
    return size;
}

Result<double> readNumber(const QString &option, const QString &text, double least, double most)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    if (!isNumber || !(number >= least && number <= most))
        return wrong(option, text, u"a number from %1 to %2"_s.arg(least).arg(most));
    return number;
}

/// The choices among names.
Result<> readChoices(const QCommandLineParser &parser, PreviewOptions &options)
{
    const auto state = stateNames().indexOf(parser.value(u"state"_s));
    if (state < 0)
        return notAmong(u"state"_s, parser.value(u"state"_s), stateNames());
    options.state = allPreviewStates().at(state);

    const auto desktop = desktopNames().indexOf(parser.value(u"desktop"_s));
    if (desktop < 0)
        return notAmong(u"desktop"_s, parser.value(u"desktop"_s), desktopNames());
    options.desktop = allDesktops.at(desktop);

    const auto section = productSection(parser.value(u"section"_s));
    if (!section)
        return notAmong(u"section"_s, parser.value(u"section"_s), sectionNames());
    options.section = *section;

    const auto language = appLanguageFromRawValue(parser.value(u"language"_s));
    if (!language)
        return notAmong(u"language"_s, parser.value(u"language"_s), {u"en"_s, u"ru"_s});
    options.language = *language;
    return Done{};
}

Result<> readMeasures(const QCommandLineParser &parser, PreviewOptions &options)
{
    const auto size = readSize(parser.value(u"size"_s));
    if (!size)
        return size.failure();
    const auto scale = readNumber(u"scale"_s, parser.value(u"scale"_s), 1, 2.5);
    if (!scale)
        return scale.failure();
    const auto scroll = readNumber(u"scroll"_s, parser.value(u"scroll"_s), 0, 1e6);
    if (!scroll)
        return scroll.failure();
    options.size = size.value();
    options.scale = scale.value();
    options.scroll = scroll.value();
    return Done{};
}

void addOptions(QCommandLineParser &parser)
{
    const auto withValue = [&](const QString &name, const QString &initially = {}) {
        parser.addOption({name, {}, name, initially});
    };
    withValue(u"state"_s, u"studying"_s);
    withValue(u"desktop"_s, u"whole"_s);
    withValue(u"section"_s, u"focus"_s);
    withValue(u"language"_s, u"en"_s);
    withValue(u"size"_s, u"1180x820"_s);
    withValue(u"scale"_s, u"1"_s);
    withValue(u"scroll"_s, u"0"_s);
    withValue(u"focus"_s);
    withValue(u"output"_s);
    withValue(u"all"_s);
    for (const auto &name : {u"full"_s, u"software"_s, u"texts"_s, u"help"_s})
        parser.addOption(QCommandLineOption(name));
}

} // namespace

QList<PreviewState> allPreviewStates()
{
    QList<PreviewState> states;
    for (int number = 0; number <= int(PreviewState::Long); ++number)
        states.append(PreviewState(number));
    return states;
}

QString nameOf(PreviewState state)
{
    switch (state) {
    case PreviewState::SignIn:
        return u"sign-in"_s;
    case PreviewState::CodeSent:
        return u"code-sent"_s;
    case PreviewState::Empty:
        return u"empty"_s;
    case PreviewState::Ready:
        return u"ready"_s;
    case PreviewState::Studying:
        return u"studying"_s;
    case PreviewState::Locked:
        return u"locked"_s;
    case PreviewState::Break:
        return u"break"_s;
    case PreviewState::CoachRunning:
        return u"coach-running"_s;
    case PreviewState::Pro:
        return u"pro"_s;
    case PreviewState::NoEvents:
        return u"no-events"_s;
    case PreviewState::Long:
        break;
    }
    return u"long"_s;
}

QString nameOf(PreviewDesktop desktop)
{
    switch (desktop) {
    case PreviewDesktop::Whole:
        return u"whole"_s;
    case PreviewDesktop::Mixed:
        return u"mixed"_s;
    case PreviewDesktop::Nothing:
        break;
    }
    return u"nothing"_s;
}

Result<PreviewOptions> readPreviewOptions(const QStringList &arguments)
{
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(QStringList(u"quorvel-preview"_s) + arguments))
        return Failure{parser.errorText()};
    if (!parser.positionalArguments().isEmpty())
        return Failure{u"\"%1\" belongs to no option."_s.arg(parser.positionalArguments().first())};

    PreviewOptions options;
    if (const auto read = readChoices(parser, options); !read)
        return read.failure();
    if (const auto read = readMeasures(parser, options); !read)
        return read.failure();
    options.full = parser.isSet(u"full"_s);
    options.software = parser.isSet(u"software"_s);
    options.texts = parser.isSet(u"texts"_s);
    options.help = parser.isSet(u"help"_s);
    options.focus = parser.value(u"focus"_s);
    options.output = parser.value(u"output"_s);
    options.all = parser.value(u"all"_s);
    for (const auto &name : {u"output"_s, u"all"_s, u"focus"_s}) {
        if (parser.isSet(name) && parser.value(name).isEmpty())
            return Failure{u"--%1 needs a value."_s.arg(name)};
    }
    return options;
}

QString previewHelp()
{
    return u"quorvel-preview shows the window with made-up data, in any state, and makes pictures of it.\n"
           "\n"
           "  --state STATE        what is going on: %1\n"
           "  --desktop DESKTOP    what the desktop lets the program do: %2\n"
           "  --section SECTION    %3\n"
           "  --language LANGUAGE  en or ru\n"
           "  --size WIDTHxHEIGHT  of the window, in logical pixels (1180x820)\n"
           "  --scale FACTOR       pixels of the picture for each of these, 1 to 2.5\n"
           "  --full               makes the window as tall as its page\n"
           "  --scroll DISTANCE    scrolls the page down, in logical pixels\n"
           "  --software           draws without a graphics processor\n"
           "  --focus NAME         gives the keyboard to the control of that accessible name\n"
           "  --output FILE        writes a PNG; without it a window opens, in which time passes\n"
           "  --texts              prints every text in sight instead\n"
           "  --all FOLDER         writes the whole set of pictures; docs/pictures is made so\n"
           "  --help               prints this\n"
           "\n"
           "Pictures are drawn by OpenGL without a graphics processor, on an X server of their own, so that\n"
           "they come out the same everywhere.\n"_s.arg(
               stateNames().join(u", "_s), desktopNames().join(u", "_s), sectionNames().join(u", "_s));
}
