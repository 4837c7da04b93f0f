#include "addedTexts.h"

std::span<const L10nRow> addedTexts()
{
    static constexpr std::array rows{
        L10nRow{u"desktop_applications", u"Applications", u"Приложения"},
        L10nRow{u"desktop_browsers", u"Browser tabs", u"Вкладки браузера"},
        L10nRow{u"desktop_limits", u"Limits of this desktop", u"Ограничения этой системы"},
        L10nRow{u"desktop_limits_subtitle", u"What Quorvel cannot do here, and why.",
                u"Чего Quorvel здесь не может и почему."},
        L10nRow{u"desktop_status_item", u"Status item", u"Значок в панели"},
        L10nRow{u"language_switch", u"Interface language", u"Язык интерфейса"},
        L10nRow{u"section_list", u"Sections", u"Разделы"},
        L10nRow{u"session_progress", u"Session progress", u"Ход сессии"},
        L10nRow{u"status_line", u"Status", u"Состояние"},
    };
    return rows;
}
