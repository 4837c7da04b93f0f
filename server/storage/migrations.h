#pragma once

#include "DatabaseConnection.h"
#include "Result.h"

/// The version of the tables that this program works with.
int newestSchemaVersion();

/// Brings the tables to newestSchemaVersion() in one transaction, under a lock that other instances wait for.
/// Fails where they are newer. The connection is open and writes; throws what the database throws.
Result<> migrate(DatabaseConnection &connection);
