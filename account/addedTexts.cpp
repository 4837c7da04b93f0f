#include "addedTexts.h"

std::span<const L10nRow> addedTexts()
{
    static constexpr std::array rows{
        L10nRow{u"desktop_applications", u"Applications", u"Приложения"},
        L10nRow{u"desktop_browsers", u"Browser tabs", u"Вкладки браузера"},
        L10nRow{u"desktop_preferences", u"Saving", u"Сохранение"},
        L10nRow{u"desktop_status_item", u"Status item", u"Значок в панели"},
        L10nRow{u"desktop_support", u"This computer", u"Этот компьютер"},
        L10nRow{u"desktop_support_subtitle", u"What Quorvel can see and do here.",
                u"Что Quorvel здесь видит и может."},
        L10nRow{u"desktop_works_applications",
                u"Quorvel sees which application is in front and can close others.",
                u"Quorvel видит, какое приложение впереди, и может закрывать другие."},
        L10nRow{u"desktop_works_idle", u"Quorvel sees when nobody is at the computer.",
                u"Quorvel видит, когда за компьютером никого нет."},
        L10nRow{u"desktop_works_status_item", u"The session's time stands in the panel.",
                u"Время сессии стоит в панели."},
        L10nRow{u"desktop_no_browser", u"No browser is running.", u"Ни один браузер не запущен."},
        L10nRow{u"language_switch", u"Interface language", u"Язык интерфейса"},
        L10nRow{u"section_list", u"Sections", u"Разделы"},
        L10nRow{u"session_progress", u"Session progress", u"Ход сессии"},
    };
    return rows;
}
