// SPDX-License-Identifier: MIT
#include "HomeServer/Robots/Assistant.h"

#include "HomeServer/Accounts/Users.h"
#include "HomeServer/Ai/TextRules.h"
#include "HomeServer/Store/Query.h"

#include <QRegularExpression>

#include <array>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

enum class Topic { Greeting, Unread, Count, Latest, Thanks, Help };

struct Rule {
    Topic topic;
    const char16_t *words; // whole words or their beginnings, as a pattern
};

constexpr std::array rules = {
    Rule{Topic::Unread, u"unread|missed|непрочитан|пропустил"},
    Rule{Topic::Count, u"count|how many|number of|сколько|количество"},
    Rule{Topic::Latest, u"last|latest|recent|новост|последн|недавн"},
    Rule{Topic::Thanks, u"thank|thanks|спасибо|благодар"},
    Rule{Topic::Greeting,
         u"hi|hello|hey|good (morning|day|evening)|привет|здравствуй|добр(ый|ое) (день|утро|вечер)"},
};

Topic topicOf(const QString &question) {
    for (const Rule &rule : rules) {
        const QRegularExpression words(u"\\b(%1)"_s.arg(QString::fromUtf16(rule.words)),
                                       QRegularExpression::CaseInsensitiveOption |
                                           QRegularExpression::UseUnicodePropertiesOption);
        if (words.match(question).hasMatch())
            return rule.topic;
    }
    return Topic::Help;
}

struct Numbers {
    qint64 chats = 0;
    qint64 messages = 0;
    qint64 unread = 0;
};

Numbers numbersOf(Database &database, qint64 user) {
    Query row(database,
              u"SELECT count(DISTINCT k.chat_id), count(m.seq), "
              "coalesce(sum(m.seq > k.read_seq AND m.sender_id <> k.user_id), 0) "
              "FROM members k LEFT JOIN messages m ON m.chat_id = k.chat_id WHERE k.user_id = ?"_s,
              {user});
    row.next();
    return {row.integer(0), row.integer(1), row.integer(2)};
}

// Up to three lines "name: beginning of the text", the newest last, from chats with other people.
QString latestLines(Database &database, qint64 user) {
    QStringList lines;
    Query rows(database,
               u"SELECT u.display_name, m.content FROM messages m JOIN members k ON k.chat_id = m.chat_id "
               "JOIN users u ON u.id = m.sender_id "
               "WHERE k.user_id = ?1 AND m.sender_id <> ?1 AND u.is_bot = 0 AND m.type = 'text' "
               "ORDER BY m.seq DESC LIMIT 3"_s,
               {user});
    while (rows.next())
        lines.prepend(u"%1: %2"_s.arg(rows.text(0), rows.text(1).simplified().left(100)));
    return lines.join(u'\n');
}

QString latest(Database &database, qint64 user, bool russian) {
    const QString lines = latestLines(database, user);
    if (lines.isEmpty())
        return russian ? u"Вам пока никто не писал."_s : u"Nobody has written to you yet."_s;
    return (russian ? u"Последние сообщения:\n"_s : u"Latest messages:\n"_s) + lines;
}

} // namespace

QString assistantAnswer(Database &database, qint64 askedBy, const QString &question) {
    const bool russian = looksRussian(question);
    const Numbers numbers = numbersOf(database, askedBy);
    switch (topicOf(question)) {
    case Topic::Greeting:
        return (russian ? u"Здравствуйте, %1!"_s : u"Hello, %1!"_s).arg(displayName(database, askedBy));
    case Topic::Unread:
        return (russian ? u"Непрочитанных сообщений: %1."_s : u"Unread messages: %1."_s).arg(numbers.unread);
    case Topic::Count:
        return (russian ? u"Чатов: %1, сообщений в них: %2."_s : u"Chats: %1, messages in them: %2."_s)
            .arg(numbers.chats)
            .arg(numbers.messages);
    case Topic::Latest:
        return latest(database, askedBy, russian);
    case Topic::Thanks:
        return russian ? u"Пожалуйста!"_s : u"You are welcome!"_s;
    case Topic::Help:
        break;
    }
    return russian ? u"Я работаю без языковой модели и умею немногое: сказать, сколько у вас чатов и "
                     u"сообщений, сколько "
                     "непрочитанных, и показать последние сообщения."_s
                   : u"I work without a language model, so I can do only a little: tell how many chats and "
                     u"messages you "
                     "have, how many are unread, and show the latest messages."_s;
}

} // namespace orvane::homeserver
