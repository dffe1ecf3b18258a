#include "localservice/engine/HtmlEntities.h"

#include <QHash>

namespace quillmate::localservice
{

namespace
{

constexpr qsizetype longestReference = 12;

const QHash<QStringView, char16_t>& namedCharacters()
{
    // U+00A0 to U+00FF in their order, then the rest with their code points.
    static constexpr QStringView latin =
        u"nbsp iexcl cent pound curren yen brvbar sect uml copy ordf laquo not shy reg macr deg plusmn sup2 sup3 acute "
        u"micro para middot cedil sup1 ordm raquo frac14 frac12 frac34 iquest Agrave Aacute Acirc Atilde Auml Aring "
        u"AElig "
        u"Ccedil Egrave Eacute Ecirc Euml Igrave Iacute Icirc Iuml ETH Ntilde Ograve Oacute Ocirc Otilde Ouml times "
        u"Oslash "
        u"Ugrave Uacute Ucirc Uuml Yacute THORN szlig agrave aacute acirc atilde auml aring aelig ccedil egrave eacute "
        u"ecirc euml igrave iacute icirc iuml eth ntilde ograve oacute ocirc otilde ouml divide oslash ugrave uacute "
        u"ucirc "
        u"uuml yacute thorn yuml";
    static const QHash<QStringView, char16_t> characters = [] {
        QHash<QStringView, char16_t> table = {
            {u"amp", u'&'},         {u"lt", u'<'},          {u"gt", u'>'},          {u"quot", u'"'},
            {u"apos", u'\''},       {u"ndash", u'\u2013'},  {u"mdash", u'\u2014'},  {u"lsquo", u'\u2018'},
            {u"rsquo", u'\u2019'},  {u"sbquo", u'\u201A'},  {u"ldquo", u'\u201C'},  {u"rdquo", u'\u201D'},
            {u"bdquo", u'\u201E'},  {u"bull", u'\u2022'},   {u"hellip", u'\u2026'}, {u"euro", u'\u20AC'},
            {u"trade", u'\u2122'},  {u"rarr", u'\u2192'},   {u"larr", u'\u2190'},   {u"minus", u'\u2212'},
            {u"OElig", u'\u0152'},  {u"oelig", u'\u0153'},  {u"Scaron", u'\u0160'}, {u"scaron", u'\u0161'},
            {u"lsaquo", u'\u2039'}, {u"rsaquo", u'\u203A'}, {u"ensp", u' '},        {u"emsp", u' '},
            {u"thinsp", u' '},      {u"zwnj", u'\u200C'},   {u"zwj", u'\u200D'},    {u"lrm", u'\u200E'},
            {u"rlm", u'\u200F'}};
        char16_t code = 0xA0;
        for (const QStringView name : latin.split(u' ')) {
            table.insert(name, code++);
        }
        return table;
    }();
    return characters;
}

/// The character of a reference without "&" and ";"; empty when there is none.
QString characterOf(QStringView reference)
{
    if (!reference.startsWith(u'#')) {
        const auto& table = namedCharacters();
        const auto found = table.find(reference);
        return found == table.end() ? QString() : QString(QChar(found.value()));
    }
    const bool hexadecimal = reference.size() > 1 && (reference[1] == u'x' || reference[1] == u'X');
    bool numeric = false;
    const char32_t code = reference.mid(hexadecimal ? 2 : 1).toUInt(&numeric, hexadecimal ? 16 : 10);
    const bool character = numeric && code > 0 && code <= QChar::LastValidCodePoint && !QChar::isSurrogate(code);
    return character ? QString::fromUcs4(&code, 1) : QString();
}

} // namespace

QString withoutEntities(QStringView html)
{
    QString text;
    text.reserve(html.size());
    for (qsizetype index = 0; index < html.size(); ++index) {
        if (html[index] == u'&') {
            const QStringView candidate = html.mid(index + 1, longestReference);
            const qsizetype end = candidate.indexOf(u';');
            const QString character = end > 0 ? characterOf(candidate.first(end)) : QString();
            if (!character.isEmpty()) {
                text += character;
                index += end + 1;
                continue;
            }
        }
        text += html[index];
    }
    return text;
}

} // namespace quillmate::localservice
