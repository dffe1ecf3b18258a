#pragma once

#include <QObject>
#include <QQuickTextDocument>
#include <qqmlregistration.h>

namespace quillmate
{

/// Lets each paragraph of a text run in the direction of its own first letter. Qt Quick's text editors give the whole
/// text one direction, which turns a quoted right-to-left message around as soon as one line above it is English.
class ParagraphDirection : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    /// Takes the paragraphs as they are now; one without a letter goes with the one before, an empty one stays as it
    /// was. Not undoable by the user. Not from within a signal of the document. Main thread.
    Q_INVOKABLE static void apply(QQuickTextDocument* document);
};

} // namespace quillmate
