#pragma once

#include <QObject>
#include <QQuickTextDocument>
#include <QtQml/qqmlregistration.h>

/// Gives a text that can be edited or selected lines of a fixed height, as Label has by its own property.
class LineGrid : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(
        QQuickTextDocument *document READ document WRITE setDocument NOTIFY documentChanged REQUIRED FINAL)
    Q_PROPERTY(qreal line READ line WRITE setLine NOTIFY lineChanged REQUIRED FINAL)

public:
    using QObject::QObject;

    QQuickTextDocument *document() const { return m_document; }
    void setDocument(QQuickTextDocument *document);

    /// Height of one line in logical pixels.
    qreal line() const { return m_line; }
    void setLine(qreal line);

Q_SIGNALS:
    void documentChanged();
    void lineChanged();

private:
    void apply();

    QQuickTextDocument *m_document = nullptr;
    qreal m_line = 0;
    bool m_applying = false;
};
