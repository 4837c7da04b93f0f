#include "LineGrid.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

void LineGrid::setDocument(QQuickTextDocument *document)
{
    if (m_document == document)
        return;
    m_document = document;
    if (m_document)
        connect(m_document->textDocument(), &QTextDocument::contentsChanged, this, &LineGrid::apply);
    apply();
    Q_EMIT documentChanged();
}

void LineGrid::setLine(qreal line)
{
    if (qFuzzyCompare(m_line, line))
        return;
    m_line = line;
    apply();
    Q_EMIT lineChanged();
}

void LineGrid::apply()
{
    if (!m_document || m_line <= 0 || m_applying)
        return;
    auto *text = m_document->textDocument();
    // What is typed inherits the format of its neighbours; only a text that was put in whole comes without.
    const auto isOnGrid = [this](const QTextBlock &block) {
        return block.blockFormat().lineHeightType() == QTextBlockFormat::FixedHeight &&
               qFuzzyCompare(block.blockFormat().lineHeight(), m_line);
    };
    if (isOnGrid(text->firstBlock()) && isOnGrid(text->lastBlock()))
        return;
    QTextBlockFormat format;
    format.setLineHeight(m_line, QTextBlockFormat::FixedHeight);
    m_applying = true;
    const bool undoes = text->isUndoRedoEnabled();
    text->setUndoRedoEnabled(false); // the look of the lines is nothing to undo
    QTextCursor cursor(text);
    cursor.select(QTextCursor::Document);
    cursor.mergeBlockFormat(format);
    text->setUndoRedoEnabled(undoes);
    m_applying = false;
}
