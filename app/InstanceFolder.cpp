#include "InstanceFolder.h"

#include "privateFolder.h"

#include <QFile>

using namespace Qt::StringLiterals;

Result<QByteArray> instanceFolder()
{
    const auto folder = privateFolder();
    const auto path = QByteArray::fromStdString(folder.path);
    if (!folder.usable())
        return Failure{u"The folder \"%1\" cannot be used: %2\nПапку «%1» нельзя использовать: %3"_s.arg(
            QFile::decodeName(path), QString::fromStdString(folder.problem),
            QString::fromStdString(folder.problemInRussian))};
    return path;
}
