#include "hosts/preview/ParagraphDirection.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <utility>
#include <vector>

namespace quillmate
{
namespace
{

Qt::LayoutDirection directionOf(const QString& paragraph)
{
    for (const QChar letter : paragraph) {
        switch (letter.direction()) {
        case QChar::DirL:
            return Qt::LeftToRight;
        case QChar::DirR:
        case QChar::DirAL:
            return Qt::RightToLeft;
        default:
            break;
        }
    }
    return Qt::LayoutDirectionAuto;
}

} // namespace

void ParagraphDirection::apply(QQuickTextDocument* document) const
{
    QTextDocument* text = document->textDocument();
    std::vector<std::pair<int, Qt::LayoutDirection>> changes;
    Qt::LayoutDirection before = Qt::LayoutDirectionAuto;
    for (QTextBlock block = text->begin(); block.isValid(); block = block.next()) {
        const Qt::LayoutDirection own = directionOf(block.text());
        // A quotation mark alone belongs to the lines around it.
        const Qt::LayoutDirection direction = own == Qt::LayoutDirectionAuto && block.length() > 1 ? before : own;
        before = own == Qt::LayoutDirectionAuto ? before : own;
        if (direction != Qt::LayoutDirectionAuto && direction != block.blockFormat().layoutDirection()) {
            changes.emplace_back(block.position(), direction);
        }
    }
    // A change of format is announced as one of the text, so a view that answers to that must find nothing left to do.
    if (changes.empty()) {
        return;
    }
    text->setUndoRedoEnabled(false);
    QTextCursor cursor(text);
    cursor.beginEditBlock();
    for (const auto& [position, direction] : changes) {
        QTextBlockFormat format;
        format.setLayoutDirection(direction);
        cursor.setPosition(position);
        cursor.mergeBlockFormat(format);
    }
    cursor.endEditBlock();
    text->setUndoRedoEnabled(true);
}

} // namespace quillmate
