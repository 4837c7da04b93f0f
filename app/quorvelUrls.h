#pragma once

#include <QStringList>

/// Those of `texts` that are addresses of the scheme "quorvel", letter for letter and in their order. The
/// scheme is compared exactly; QUrl would lower its case.
QStringList quorvelUrls(const QStringList &texts);
