#include "hosts/preview/ParagraphDirection.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace quillmate
{
namespace
{

Qt::LayoutDirection directionOf(const QString& paragraph, Qt::LayoutDirection otherwise)
{
    for (const QChar letter : paragraph) {
        const QChar::Direction direction = letter.direction();
        if (direction == QChar::DirL) {
            return Qt::LeftToRight;
        }
        if (direction == QChar::DirR || direction == QChar::DirAL) {
            return Qt::RightToLeft;
        }
    }
    return otherwise;
}

} // namespace

void ParagraphDirection::apply(QQuickTextDocument* document)
{
    QTextDocument* text = document->textDocument();
    text->setUndoRedoEnabled(false);
    QTextCursor cursor(text);
    cursor.beginEditBlock();
    QTextBlockFormat format; // A quotation mark alone belongs to the lines around it.
    for (QTextBlock block = text->begin(); block.isValid(); block = block.next()) {
        format.setLayoutDirection(directionOf(block.text(), format.layoutDirection()));
        if (block.length() > 1) {
            cursor.setPosition(block.position());
            cursor.mergeBlockFormat(format);
        }
    }
    cursor.endEditBlock();
    text->setUndoRedoEnabled(true);
}

} // namespace quillmate
