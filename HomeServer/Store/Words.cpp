// SPDX-License-Identifier: MIT
#include "HomeServer/Store/Words.h"

#include "HomeServer/Store/Query.h"

#include <QRegularExpression>

#include <algorithm>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostWords = 5000; // of one message
constexpr qsizetype longestWord = 64;
constexpr qsizetype atOnce = 100;

} // namespace

QStringList wordsOf(const QString &text) {
    static const QRegularExpression word(u"[\\p{L}\\p{N}]+"_s);
    static const QRegularExpression accent(u"\\p{M}"_s);
    QStringList words;
    auto found =
        word.globalMatch(text.normalized(QString::NormalizationForm_KD).remove(accent).toCaseFolded());
    while (found.hasNext())
        words.append(found.next().captured());
    words.removeDuplicates();
    return words;
}

void indexWords(Database &database, qint64 seq, const QString &content) {
    execute(database, u"DELETE FROM message_words WHERE seq = ?"_s, {seq});
    QStringList words = wordsOf(content).mid(0, mostWords);
    for (QString &word : words)
        word.truncate(longestWord);
    words.removeDuplicates();
    for (qsizetype from = 0; from < words.size(); from += atOnce) {
        QVariantList values;
        QStringList rows;
        for (const QString &word : words.mid(from, atOnce)) {
            values << word << seq;
            rows.append(u"(?, ?)"_s);
        }
        const Query insert(database, u"INSERT INTO message_words(word, seq) VALUES "_s + rows.join(u", "_s),
                           values);
    }
}

} // namespace orvane::homeserver
