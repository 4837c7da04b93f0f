#include "addedTexts.h"

std::span<const L10nRow> addedTexts()
{
    static constexpr std::array rows{
        L10nRow{u"language_switch", u"Interface language", u"Язык интерфейса"},
        L10nRow{u"session_progress", u"Session progress", u"Ход сессии"},
        L10nRow{u"status_line", u"Status", u"Состояние"},
    };
    return rows;
}
