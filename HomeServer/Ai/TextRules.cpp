// SPDX-License-Identifier: MIT
#include "HomeServer/Ai/TextRules.h"

#include "HomeServer/Store/Words.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>
#include <numeric>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestSentence = 300;
constexpr qsizetype mostSentences = 400;
constexpr qsizetype summarySentences = 3;
constexpr qsizetype listSentences = 5;
constexpr qsizetype mostEntities = 8;

QRegularExpression pattern(const QString &words) {
    return QRegularExpression(u"(?<![\\p{L}])(%1)"_s.arg(words),
                              QRegularExpression::CaseInsensitiveOption |
                                  QRegularExpression::UseUnicodePropertiesOption);
}

struct Sentence {
    QString text; // with its speaker
    QStringList words;
    double weight = 0;
};

QList<Sentence> sentencesOf(const QList<Line> &lines) {
    static const QRegularExpression end(u"(?<=[.!?…])\\s+|\\n+"_s);
    QList<Sentence> sentences;
    for (const Line &line : lines)
        for (const QString &piece : line.text.split(end, Qt::SkipEmptyParts)) {
            const QString text = piece.simplified().left(longestSentence);
            if (!text.isEmpty())
                sentences.append({line.speaker + u": "_s + text, wordsOf(text)});
        }
    return sentences.mid(std::max<qsizetype>(0, sentences.size() - mostSentences));
}

// A sentence weighs as much as its words are common in the others, for each of its words; a sentence of one
// or two words says too little to stand for anything.
void weigh(QList<Sentence> &sentences) {
    QHash<QString, int> count;
    for (const Sentence &sentence : std::as_const(sentences))
        for (const QString &word : sentence.words)
            if (word.size() > 3)
                ++count[word];
    for (Sentence &sentence : sentences) {
        if (sentence.words.size() < 3)
            continue;
        const double total =
            std::accumulate(sentence.words.cbegin(), sentence.words.cend(), 0.0,
                            [&](double sum, const QString &word) { return sum + count.value(word); });
        sentence.weight = total / std::sqrt(static_cast<double>(sentence.words.size()));
    }
}

QStringList textsAt(const QList<Sentence> &sentences, QList<qsizetype> places) {
    std::ranges::sort(places);
    QStringList texts;
    for (const qsizetype place : std::as_const(places))
        texts.append(sentences[place].text);
    return texts;
}

QStringList matching(const QList<Sentence> &sentences, const QRegularExpression &wanted) {
    QStringList texts;
    for (const Sentence &sentence : sentences)
        if (texts.size() < listSentences && sentence.text.contains(wanted))
            texts.append(sentence.text);
    return texts;
}

} // namespace

bool looksRussian(const QString &text) {
    return std::ranges::any_of(text, [](QChar c) { return c.script() == QChar::Script_Cyrillic; });
}

Summary summarize(const QList<Line> &lines) {
    static const QRegularExpression decided =
        pattern(u"decided|agreed|we will|let's|решили|договорились|решено|согласовали|утвердили"_s);
    static const QRegularExpression asked = pattern(
        u"please|todo|need to|must|should|can you|could you|надо|нужно|сделай|сделать|пришли|подготов|проверь|не забудь|прошу"_s);
    QList<Sentence> sentences = sentencesOf(lines);
    weigh(sentences);
    QList<qsizetype> places(sentences.size());
    std::iota(places.begin(), places.end(), 0);
    std::ranges::stable_sort(
        places, [&](qsizetype a, qsizetype b) { return sentences[a].weight > sentences[b].weight; });
    Summary summary;
    summary.text = textsAt(sentences, places.mid(0, summarySentences)).join(u' ');
    summary.keyPoints = textsAt(sentences, places.mid(summarySentences, listSentences));
    summary.decisions = matching(sentences, decided);
    summary.tasks = matching(sentences, asked);
    return summary;
}

QStringList shortReplies(const QString &text) {
    static const QRegularExpression thanks = pattern(u"thank|спасибо|благодар"_s);
    static const QRegularExpression greeting = pattern(u"hi\\b|hello|hey\\b|привет|здравствуй|добр(ый|ое)"_s);
    static const QRegularExpression request =
        pattern(u"please|can you|could you|пожалуйста|сможешь|можешь|пришли|сделай"_s);
    const bool russian = looksRussian(text);
    if (text.simplified().isEmpty())
        return {};
    if (text.contains(thanks))
        return russian ? QStringList{u"Пожалуйста!"_s, u"Не за что"_s, u"Рад помочь"_s}
                       : QStringList{u"You're welcome!"_s, u"No problem"_s, u"Glad to help"_s};
    if (text.contains(request))
        return russian ? QStringList{u"Хорошо, сделаю"_s, u"Чуть позже"_s, u"Не смогу"_s}
                       : QStringList{u"Sure, will do"_s, u"A bit later"_s, u"Sorry, I can't"_s};
    if (text.trimmed().endsWith(u'?'))
        return russian ? QStringList{u"Да"_s, u"Нет"_s, u"Уточню и отвечу"_s}
                       : QStringList{u"Yes"_s, u"No"_s, u"Let me check"_s};
    if (text.contains(greeting))
        return russian ? QStringList{u"Привет!"_s, u"Здравствуйте!"_s, u"Как дела?"_s}
                       : QStringList{u"Hello!"_s, u"Hi there!"_s, u"How are you?"_s};
    return russian ? QStringList{u"Хорошо"_s, u"Понятно"_s, u"Спасибо"_s}
                   : QStringList{u"OK"_s, u"Got it"_s, u"Thanks"_s};
}

QList<Entity> entitiesIn(const QString &text) {
    static const QRegularExpression found(
        u"(?<=[\\p{Ll}\\p{N},] )(?<name>\\p{Lu}[\\p{L}\\-]+( \\p{Lu}[\\p{L}\\-]+)*)"
        "|(?<number>[$€₽]? ?\\d[\\d .,]*( ?[%$€₽]|(?<=\\d)))"_s,
        QRegularExpression::UseUnicodePropertiesOption);
    QList<Entity> entities;
    auto matches = found.globalMatch(text);
    while (matches.hasNext() && entities.size() < mostEntities) {
        const auto match = matches.next();
        const bool name = match.hasCaptured(u"name"_s);
        const Entity entity{name ? u"name"_s : u"number"_s, match.captured().trimmed()};
        if (std::ranges::none_of(entities, [&](const Entity &other) { return other.name == entity.name; }))
            entities.append(entity);
    }
    return entities;
}

} // namespace orvane::homeserver
