#pragma once

#include "DatabaseConnection.h"

#include <memory>
#include <string>

/// Whether libpq understands the URL.
bool isPostgresqlUrl(const std::string &url);

/// A database of PostgreSQL. libpq reads the URL.
Result<std::unique_ptr<DatabaseEngine>> postgresqlEngine(const std::string &url);
