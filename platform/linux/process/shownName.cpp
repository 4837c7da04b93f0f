#include "shownName.h"

namespace {

// Names go into lists, status lines and logs: nobody reads more of one than this.
constexpr qsizetype longestName = 256;

} // namespace

QString shownName(QString name)
{
    for (auto &character : name) {
        if (character.category() == QChar::Other_Control)
            character = u' ';
    }
    name = name.simplified();
    if (name.size() > longestName) {
        const bool splitsPair = name[longestName - 1].isHighSurrogate();
        name.truncate(splitsPair ? longestName - 1 : longestName);
    }
    return name;
}
