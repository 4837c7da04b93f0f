#pragma once

#include "contrast.h"

#include <QMap>

/// The lowest contrast of each kind of text over all that was measured. A kind is a colour in a style, on
/// what it stands on.
class ContrastReport
{
public:
    /// `situation` names what was shown, for a person.
    void note(const TextContrast &contrast, const QString &situation);

    bool isEmpty() const { return m_kinds.isEmpty(); }

    /// The kinds below what WCAG 2.1 AA wants, each with its ratio to one decimal.
    QStringList shortfalls() const;

    /// The kinds that the palette, which is fixed, leaves short, and by how much.
    static QStringList knownShortfalls();

    /// Everything that was measured, as a page for people.
    QString table() const;

    /// Whether a page tells of the same kinds with the same ratios, but for rounding.
    bool agreesWith(const QString &page) const;

private:
    struct Lowest
    {
        double ratio = 21;
        double wanted = 4.5;
        QString text;
        QString situation;
    };
    QMap<QString, Lowest> m_kinds;
};
