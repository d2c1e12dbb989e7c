// SPDX-License-Identifier: MIT
#include "Platform/VCard.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QBuffer>
#include <QFile>
#include <QStringEncoder>

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

QList<VCard> cardsOf(QByteArray bytes) {
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return readVCards(buffer);
}

// given|family|organization|number (label), number|picture's size or address
QString words(const VCard &card) {
    QStringList numbers;
    for (const PhoneNumber &number : card.person.numbers)
        numbers << (number.label.isEmpty() ? number.value : number.value + u" ("_s + number.label + u')');
    QString picture = card.pictureAddress;
    if (!card.person.picture.isEmpty())
        picture = QString::number(card.person.picture.size());
    return QStringList{card.person.givenName, card.person.familyName, card.person.organization,
                       numbers.join(u", "), picture}
        .join(u'|');
}

QStringList words(const QList<VCard> &cards) {
    QStringList result;
    for (const VCard &card : cards)
        result << words(card);
    return result;
}

QByteArray card(const QByteArray &lines) {
    return "BEGIN:VCARD\r\n" + lines + "END:VCARD\r\n";
}

QByteArray fixture(const QString &name) {
    QFile file(QStringLiteral(FIXTURES) + u'/' + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no fixture %s", qPrintable(name));
    return file.readAll();
}

} // namespace

class TestVCard : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatOthersWrite() {
        const auto check = [](const char *name, QByteArray bytes, const QStringList &expected) {
            IN_ROW(name);
            QCOMPARE(words(cardsOf(bytes)), expected);
            QCOMPARE(words(cardsOf(bytes.replace("\r\n", "\n"))), expected);
        };
        const QString anna = u"Анна, Мария|Ветрова; мл.|Ромашка, "_s +
                             u"и сыновья, "_s.repeated(12).trimmed() +
                             "|+7 (900) 123 (mobile), 8-495-000 (home fax)|";
        check("vobject, 3.0", fixture("vobject.vcf"), {anna + "56"});
        check("Evolution, 3.0", fixture("evolution.vcf"),
              {anna + u"file:///home/anna/.local/share/evolution/addressbook/photos/"
                      "pas_id_8416872bbd525bedc0a6cd4ee6e77ba16900094d_photo-file0.image-2FJPEG"_s});
        const QString alexander =
            u"Александр|Константинопольский|"
            "Первое общество любителей садоводства и огородничества|+7 (900) 123 (mobile)|"_s;
        check("Python, 2.1, windows-1251 and UTF-8", fixture("quopri.vcf"), {alexander, alexander});
        // The example of RFC 6350, 8, as far as it matters here.
        check("4.0",
              card("VERSION:4.0\r\nFN:Simon Perreault\r\nN:Perreault;Simon;;;ing. jr,M.Sc.\r\n"
                   "ORG;TYPE=work:Viagenie\r\n"
                   "TEL;VALUE=uri;TYPE=\"work,voice\";PREF=1:tel:+1-418-656-9254;ext=102\r\n"
                   "TEL;VALUE=uri;TYPE=\"work,cell,voice,video,text\":tel:+1-418-262-6501\r\n"),
              {"Simon|Perreault|Viagenie|+1-418-656-9254 (work), +1-418-262-6501 (mobile)|"});
    }

    void cards() {
        const auto check = [](const char *name, const QByteArray &bytes, const QStringList &expected) {
            IN_ROW(name);
            QCOMPARE(words(cardsOf(bytes)), expected);
        };
        const auto one = [&](const char *name, const QByteArray &lines, const QString &expected) {
            check(name, card(lines), {expected});
        };
        check("nothing", "", {});
        check("no card", "<html>BEGIN:VCARD\r\n\r\n", {});
        one("an empty card", "", "||||");
        check("lower case, spaces around", "begin:vcard\nn : V;A\ntel ; cell : 1\nend:vcard\n",
              {"A|V||1 (mobile)|"});
        one("folded within a character", "N:;\xD0\r\n \x90\r\n\t\xD0\xBD\r\n", "Ан||||");
        one("only a shown name", "FN:Anna V\r\nTEL:1\r\n", "Anna V|||1|");
        one("a company", "FN:Acme\r\nN:;;;;\r\nORG:Acme;Sales\r\nTEL:1\r\n", "||Acme|1|");
        one("a company by another name", "FN:Acme Ltd\r\nX-ABShowAs:COMPANY\r\nORG:Acme\r\n", "||Acme||");
        one("a group", "FN:Friends\r\nKIND:group\r\n", "||||");
        one("escapes", "N:a\\;b\\,c\\\\;d\\ne\\:f\r\n", "d\ne:f|a;b,c\\|||");
        one("one backslash at the end", "N:a\\\r\n", "|a|||");
        one("labels of their own",
            "item1.TEL:1\r\nitem1.X-ABLabel:_$!<Mobile>!$_\r\nitem2.TEL;TYPE=home:2\r\n"
            "item2.X-ABLabel:Дача\r\nX-ABLabel:nobody's\r\nTEL:3\r\n",
            "|||1 (mobile), 2 (Дача), 3|");
        one("kinds of numbers",
            "TEL;TYPE=iPhone,CELL,VOICE,pref:1\r\nTEL;TYPE=work;TYPE=fax:2\r\nTEL;PAGER:3\r\n"
            "TEL;TYPE=main:4\r\nTEL;TYPE=voice:5\r\n",
            "|||1 (iPhone), 2 (work fax), 3 (pager), 4 (main), 5|");
        one("a colon in quotes", "TEL;X-A=\"a:b;c\";TYPE=home:1\r\n", "|||1 (home)|");
        one("a quote without an end", "TEL;X-A=\"a;TYPE=home:1\r\n", "|||1|");
        one("lines that are none", "garbage\r\n:value\r\n;TYPE=x:y\r\n=:1\r\nTEL:1\r\n\r\n \r\n", "|||1|");
        check("the end is lost", "BEGIN:VCARD\nN:;A\nBEGIN:VCARD\nN:;B\nEND:VCARD\nEND:VCARD\n",
              {"A||||", "B||||"});
        check("cut off", card("N:;A\r\n") + "BEGIN:VCARD\r\nN:;B\r\nTEL:12", {"A||||"});
        one("somebody's secretary",
            "N:;A\r\nAGENT:\r\nBEGIN:VCARD\r\nN:;S\r\nTEL:2\r\nEND:VCARD\r\nTEL:1\r\n", "A|||1|");
        check("quoted-printable to the end of the file", "BEGIN:VCARD\nN;QUOTED-PRINTABLE:;=41=\n=42=ZZ=\n",
              {});
        one("quoted-printable that is none", "N;ENCODING=QUOTED-PRINTABLE:;=4G=4\r\n", "G=4||||");
        one("an unknown character set", "N;CHARSET=x-none:;\xD0\x90\r\n", "А||||");
        one("no character set, and no UTF-8", "N:;Andr\xE9\r\n", "André||||");
        one("KOI8-R", "N;CHARSET=KOI8-R:;\xE1\xCE\xCE\xC1\r\n", "Анна||||");
        check("a byte order mark", "\xEF\xBB\xBF" + card("N:;A\r\n"), {"A||||"});
        QStringEncoder utf16(QStringEncoder::Utf16, QStringEncoder::Flag::WriteBom);
        const QByteArray wide = utf16.encode(QString::fromUtf8(card("N:;Анна 👋\r\n")));
        check("UTF-16", wide, {"Анна 👋||||"});
        check("half of a UTF-16 mark", wide.left(1), {});
        one("right to left", "N:;أنّا\r\n", "أنّا||||");
        one("a picture that isn't indented, 2.1", "PHOTO;JPEG;BASE64:AAAA\r\nAAAA\r\n\r\nTEL:1\r\n",
            "|||1|6");
        one("a picture of 4.0", "PHOTO:data:image/png;base64\\,AAAA\r\n", "||||3");
        one("a picture elsewhere", "PHOTO;VALUE=uri:https://example.org/a.png\r\n",
            "||||https://example.org/a.png");
        one("two pictures", "PHOTO;ENCODING=b:AAAA\r\nPHOTO;ENCODING=b:AAAAAAAA\r\n", "||||3");
        one("no picture at all", "PHOTO;ENCODING=b:****\r\n", "||||");
    }

    void aHugePictureIsNeverHeldWhole() {
        struct : QBuffer {
            qint64 largestRead = 0;
            qint64 readData(char *data, qint64 wanted) override {
                largestRead = std::max(largestRead, wanted);
                return QBuffer::readData(data, wanted);
            }
        } device;
        device.setData(card("N:;A\r\nPHOTO;ENCODING=b:" + QByteArray(70'000'000, 'A') + "\r\nTEL:1\r\n"));
        device.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
        QCOMPARE(words(readVCards(device)), QStringList{"A|||1|262144"});
        QVERIFY(device.largestRead < 1'000'000);
    }

    void aMillionBrokenLines() {
        const QByteArray many = QByteArray("=:;\"\r\n TEL\r\n").repeated(100'000);
        QCOMPARE(words(cardsOf(card(many + "N:;A\r\n"))), QStringList{"A||||"});
    }
};

ORVANE_TEST_MAIN(TestVCard)
#include "tst_vcard.moc"
