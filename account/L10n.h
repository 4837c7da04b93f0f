#pragma once

#include "AppLanguage.h"

#include <QStringView>

/// The labels, titles and standing texts of the interface.
namespace L10n {

/// The text of `key` in `language`, else its English text, else the key itself: a missing text shows on
/// screen as its own key and is never an error.
QString t(QStringView key, AppLanguage language);

} // namespace L10n
