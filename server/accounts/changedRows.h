#pragma once

#include <soci/soci.h>

/// Runs a statement and tells how many rows it has changed.
inline long long changedRows(const soci::details::prepare_temp_type &prepared)
{
    soci::statement statement(prepared);
    statement.execute(true);
    return statement.get_affected_rows();
}
