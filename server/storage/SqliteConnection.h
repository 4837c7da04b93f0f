#pragma once

#include "DatabaseConnection.h"

#include <memory>
#include <string>

/// Whether a file of SQLite may have that path.
bool isSqlitePath(const std::string &path);

/// The database in a file of SQLite, which is made where there is none, for its owner alone.
Result<std::unique_ptr<DatabaseEngine>> sqliteEngine(const std::string &path);
