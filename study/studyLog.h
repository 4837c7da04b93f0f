#pragma once

#include <QLoggingCategory>

/// What the record files and their copies have to say.
Q_DECLARE_LOGGING_CATEGORY(lcStudy)
