#pragma once

#include "UrlOpener.h"

#include <QList>

/// A desktop that only remembers what it was to open.
class FakeUrlOpener : public UrlOpener
{
public:
    QList<QUrl> opened;

    void open(const QUrl &url) override { opened.append(url); }
};
