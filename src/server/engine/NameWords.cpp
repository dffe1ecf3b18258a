#include "server/engine/NameWords.h"

#include "server/engine/WordPatterns.h"

namespace quillmate::server
{

namespace
{

QString bare(const QString& word)
{
    return word.toLower().remove(u'.');
}

} // namespace

bool isTitle(const QString& word)
{
    static const QSet<QString> titles =
        wordSet(QStringLiteral("dr prof professor mr mrs ms miss mx sir herr frau mme mlle madame monsieur sr sra srta "
                               "dra lic rev ing mag dipl-ing dr-ing familie family famille familia"));
    return titles.contains(bare(word));
}

bool isTitleSuffix(const QString& word)
{
    static const QSet<QString> suffixes = wordSet(QStringLiteral("med rer nat phil jur pol oec hc h c habil"));
    return word.endsWith(u'.') && suffixes.contains(bare(word));
}

bool isDegree(const QString& word)
{
    static const QSet<QString> degrees = wordSet(QStringLiteral("phd md mba msc bsc ma ba llm cpa esq jr sr ii iii"));
    return degrees.contains(bare(word));
}

bool isNameParticle(const QString& word)
{
    static const QSet<QString> particles = wordSet(
        QStringLiteral("von van de der den del della da di do dos das du des la le ter ten zu zur y e bin ibn al el"));
    return particles.contains(word.toLower());
}

bool isNeverInName(const QString& word)
{
    static const QSet<QString> words = wordSet(QStringLiteral(
        "team support service services customer care kundenservice kundendienst équipe equipo company corporation gmbh "
        "ag kg inc ltd llc corp sarl sas s.l department dept abteilung sales vertrieb marketing office büro newsletter "
        "sekretariat verwaltung university universität université universidad school institute institut manager "
        "director direktor directeur directrice directora ceo cto cfo coo engineer geschäftsführer geschäftsführerin "
        "vorstand leiter leiterin assistant assistentin president head chief officer consultant ingénieur gerente "
        "responsable auftrag behalf group bank insurance agentur agence agency thanks thank danke dank merci gracias "
        "regards wishes greetings cheers grüße grüßen gruß saludos saludo cordialement best kind kindest warm mit mfg "
        "lg vg yes no ja nein oui non ok okay hi hello hallo dear hey bonjour hola liebe lieber all everyone everybody "
        "mate folks guys zusammen alle leute tous toutes todos friends freunde see talk until bis bei viel alles gute "
        "schönes schöne bonne belle buen buena feliz good great have happy enjoy fine perfect perfekt super sure "
        "agreed done noted please bitte attachment attachments anhang anbei anlage anlagen enclosure tel telefon "
        "telephone phone mobile mobil fax email e-mail mail web www ps monday tuesday wednesday thursday friday "
        "saturday sunday montag dienstag mittwoch donnerstag freitag samstag sonntag lundi mardi mercredi jeudi "
        "vendredi samedi dimanche lunes martes miércoles jueves viernes sábado domingo"));
    return words.contains(bare(word));
}

} // namespace quillmate::server
