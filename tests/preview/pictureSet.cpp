#include "pictureSet.h"

#include <QImageWriter>

using namespace Qt::StringLiterals;

namespace {

bool isNear(QRgb left, QRgb right)
{
    return std::abs(qRed(left) - qRed(right)) <= mostCalmed &&
           std::abs(qGreen(left) - qGreen(right)) <= mostCalmed &&
           std::abs(qBlue(left) - qBlue(right)) <= mostCalmed;
}

const QRgb *lineOf(const QImage &picture, int row)
{
    return reinterpret_cast<const QRgb *>(picture.constScanLine(row));
}

} // namespace

QList<SetPicture> pictureSet()
{
    QList<SetPicture> set;
    const auto add = [&](const QString &name, AppLanguage language, const QStringList &arguments) {
        const auto code = rawValue(language);
        set.append({name + u"-"_s + code + u".png"_s, arguments + QStringList{u"--language"_s, code}});
    };
    for (const auto language : {AppLanguage::English, AppLanguage::Russian}) {
        add(u"sign-in"_s, language, {u"--state"_s, u"sign-in"_s});
        for (const auto section : allProductSections)
            add(rawValue(section), language, {u"--section"_s, rawValue(section)});
        add(u"focus-smallest"_s, language, {u"--size"_s, u"900x640"_s});
        add(u"focus-4k"_s, language, {u"--size"_s, u"1920x1080"_s, u"--scale"_s, u"2"_s});
    }
    return set;
}

QImage calm(const QImage &picture)
{
    const auto given = picture.convertToFormat(QImage::Format_RGB32);
    auto calmed = given.copy();
    for (int row = 0; row < given.height(); ++row) {
        const auto *from = lineOf(given, row);
        auto *to = reinterpret_cast<QRgb *>(calmed.scanLine(row));
        const auto *above = row > 0 ? lineOf(calmed, row - 1) : nullptr;
        for (int column = 0; column < given.width(); ++column) {
            if (column > 0 && isNear(to[column - 1], from[column]))
                to[column] = to[column - 1];
            else if (above && isNear(above[column], from[column]))
                to[column] = above[column];
        }
    }
    calmed.setDevicePixelRatio(picture.devicePixelRatio());
    return calmed;
}

Result<> writePicture(const QImage &picture, const QString &path)
{
    QImageWriter writer(path, "png");
    writer.setQuality(0); // PNG loses nothing: 0 is the most compression
    if (!writer.write(picture))
        return Failure{u"%1 cannot be written: %2."_s.arg(path, writer.errorString())};
    return Done{};
}
