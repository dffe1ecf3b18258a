#include "localservice/engine/NameWords.h"

#include <QSet>
#include <QStringList>

namespace quillmate::localservice
{

namespace
{

using WordSet = QSet<QString>;

WordSet wordsOf(const char16_t* list)
{
    const QStringList words = QString::fromUtf16(list).split(u' ');
    return {words.begin(), words.end()};
}

QString bare(const QString& word)
{
    return word.toLower().remove(u'.');
}

} // namespace

bool isTitle(const QString& word)
{
    static const WordSet titles = wordsOf(u"dr prof professor mr mrs ms miss mx sir herr frau mme mlle madame monsieur "
                                          u"sr sra srta dra lic rev ing mag dipl-ing dr-ing "
                                          u"familie family famille familia");
    return titles.contains(bare(word));
}

bool isTitleSuffix(const QString& word)
{
    static const WordSet suffixes = wordsOf(u"med rer nat phil jur pol oec hc h c habil");
    return word.endsWith(u'.') && suffixes.contains(bare(word));
}

bool isDegree(const QString& word)
{
    static const WordSet degrees = wordsOf(u"phd md mba msc bsc ma ba llm cpa esq jr sr ii iii");
    return degrees.contains(bare(word));
}

bool isNameParticle(const QString& word)
{
    static const WordSet particles =
        wordsOf(u"von van de der den del della da di do dos das du des la le ter ten zu zur y e bin ibn al el");
    return particles.contains(word.toLower());
}

bool isNeverInName(const QString& word)
{
    static const WordSet words = wordsOf(
        u"team support service services customer care kundenservice kundendienst équipe equipo company corporation "
        u"gmbh ag kg inc ltd llc corp sarl sas s.l department dept abteilung sales vertrieb marketing office büro "
        u"newsletter sekretariat verwaltung university universität université universidad school institute institut "
        u"manager director direktor directeur directrice directora ceo cto cfo coo engineer geschäftsführer "
        u"geschäftsführerin vorstand leiter leiterin assistant assistentin president head chief officer consultant "
        u"ingénieur gerente responsable auftrag behalf group bank insurance agentur agence agency "
        u"thanks thank danke dank merci gracias regards wishes greetings cheers grüße grüßen gruß saludos saludo "
        u"cordialement best kind kindest warm mit mfg lg vg yes no ja nein oui non ok okay hi hello hallo dear hey "
        u"bonjour hola liebe lieber all everyone everybody mate folks guys zusammen alle leute tous toutes todos "
        u"friends freunde see talk until bis bei viel alles gute schönes schöne bonne belle buen buena feliz good "
        u"great "
        u"have happy enjoy fine perfect perfekt super sure agreed done noted please bitte attachment attachments "
        u"anhang anbei anlage anlagen enclosure tel telefon "
        u"telephone phone mobile mobil fax email e-mail mail web www ps monday tuesday wednesday thursday friday "
        u"saturday sunday montag dienstag mittwoch donnerstag freitag samstag sonntag lundi mardi mercredi jeudi "
        u"vendredi samedi dimanche lunes martes miércoles jueves viernes sábado domingo");
    return words.contains(bare(word));
}

} // namespace quillmate::localservice
