#pragma once

#include <QString>

namespace quillmate::server
{

/// How much a reader of the message would miss the sentence, by what can be seen in it: a request, a question, a
/// change of plan, a date, a time of day or an amount raises it. From 0; an average TextRank weight is 1.
double weightOfSigns(const QString& sentence);

/// Whether it names a day or a time of day.
bool namesTime(const QString& sentence);

/// Whether it names an amount of money, or a share in per cent.
bool namesAmount(const QString& sentence);

/// Whether it is what letters end with in any message ("Kind regards", "よろしくお願いいたします。"), or a footer that
/// a mailing program adds.
bool isClosingFormula(const QString& sentence);

/// Whether it begins as an item of a list does.
bool isListItem(const QString& sentence);

} // namespace quillmate::server
