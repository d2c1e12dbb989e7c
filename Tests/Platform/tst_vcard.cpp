// SPDX-License-Identifier: MIT
#include "Platform/VCard.h"
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
    void whatOthersWrite_data();
    void whatOthersWrite();
    void cards_data();
    void cards();
    void aHugePictureIsNeverHeldWhole();
    void aMillionBrokenLines();
};

void TestVCard::whatOthersWrite_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("expected");
    const QString anna = u"Анна, Мария|Ветрова; мл.|Ромашка, "_s + u"и сыновья, "_s.repeated(12).trimmed() +
                         u"|+7 (900) 123 (mobile), 8-495-000 (home fax)|"_s;
    QTest::newRow("vobject, 3.0") << fixture(u"vobject.vcf"_s) << QStringList{anna + u"56"_s};
    QTest::newRow("Evolution, 3.0")
        << fixture(u"evolution.vcf"_s)
        << QStringList{anna + u"file:///home/anna/.local/share/evolution/addressbook/photos/"
                              "pas_id_8416872bbd525bedc0a6cd4ee6e77ba16900094d_photo-file0.image-2FJPEG"_s};
    const QString alexander =
        u"Александр|Константинопольский|"
        "Первое общество любителей садоводства и огородничества|+7 (900) 123 (mobile)|"_s;
    QTest::newRow("Python, 2.1, windows-1251 and UTF-8")
        << fixture(u"quopri.vcf"_s) << QStringList{alexander, alexander};
    // The example of RFC 6350, 8, as far as it matters here.
    QTest::newRow("4.0")
        << card("VERSION:4.0\r\nFN:Simon Perreault\r\nN:Perreault;Simon;;;ing. jr,M.Sc.\r\n"
                "ORG;TYPE=work:Viagenie\r\n"
                "TEL;VALUE=uri;TYPE=\"work,voice\";PREF=1:tel:+1-418-656-9254;ext=102\r\n"
                "TEL;VALUE=uri;TYPE=\"work,cell,voice,video,text\":tel:+1-418-262-6501\r\n")
        << QStringList{u"Simon|Perreault|Viagenie|+1-418-656-9254 (work), +1-418-262-6501 (mobile)|"_s};
}

void TestVCard::whatOthersWrite() {
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, expected);
    QCOMPARE(words(cardsOf(bytes)), expected);
    QCOMPARE(words(cardsOf(bytes.replace("\r\n", "\n"))), expected);
}

void TestVCard::cards_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const QByteArray &bytes, const QStringList &expected) {
        QTest::newRow(name) << bytes << expected;
    };
    row("nothing", "", {});
    row("no card", "<html>BEGIN:VCARD\r\n\r\n", {});
    row("an empty card", card(""), {u"||||"_s});
    row("lower case, spaces around", "begin:vcard\nn : V;A\ntel ; cell : 1\nend:vcard\n",
        {u"A|V||1 (mobile)|"_s});
    row("folded within a character", card("N:;\xD0\r\n \x90\r\n\t\xD0\xBD\r\n"), {u"Ан||||"_s});
    row("only a shown name", card("FN:Anna V\r\nTEL:1\r\n"), {u"Anna V|||1|"_s});
    row("a company", card("FN:Acme\r\nN:;;;;\r\nORG:Acme;Sales\r\nTEL:1\r\n"), {u"||Acme|1|"_s});
    row("a company by another name", card("FN:Acme Ltd\r\nX-ABShowAs:COMPANY\r\nORG:Acme\r\n"),
        {u"||Acme||"_s});
    row("a group", card("FN:Friends\r\nKIND:group\r\n"), {u"||||"_s});
    row("escapes", card("N:a\\;b\\,c\\\\;d\\ne\\:f\r\n"), {u"d\ne:f|a;b,c\\|||"_s});
    row("one backslash at the end", card("N:a\\\r\n"), {u"|a|||"_s});
    row("labels of their own",
        card("item1.TEL:1\r\nitem1.X-ABLabel:_$!<Mobile>!$_\r\nitem2.TEL;TYPE=home:2\r\n"
             "item2.X-ABLabel:Дача\r\nX-ABLabel:nobody's\r\nTEL:3\r\n"),
        {u"|||1 (mobile), 2 (Дача), 3|"_s});
    row("kinds of numbers",
        card("TEL;TYPE=iPhone,CELL,VOICE,pref:1\r\nTEL;TYPE=work;TYPE=fax:2\r\nTEL;PAGER:3\r\n"
             "TEL;TYPE=main:4\r\nTEL;TYPE=voice:5\r\n"),
        {u"|||1 (iPhone), 2 (work fax), 3 (pager), 4 (main), 5|"_s});
    row("a colon in quotes", card("TEL;X-A=\"a:b;c\";TYPE=home:1\r\n"), {u"|||1 (home)|"_s});
    row("a quote without an end", card("TEL;X-A=\"a;TYPE=home:1\r\n"), {u"|||1|"_s});
    row("lines that are none", card("garbage\r\n:value\r\n;TYPE=x:y\r\n=:1\r\nTEL:1\r\n\r\n \r\n"),
        {u"|||1|"_s});
    row("the end is lost", "BEGIN:VCARD\nN:;A\nBEGIN:VCARD\nN:;B\nEND:VCARD\nEND:VCARD\n",
        {u"A||||"_s, u"B||||"_s});
    row("cut off", card("N:;A\r\n") + "BEGIN:VCARD\r\nN:;B\r\nTEL:12", {u"A||||"_s});
    row("somebody's secretary",
        card("N:;A\r\nAGENT:\r\nBEGIN:VCARD\r\nN:;S\r\nTEL:2\r\nEND:VCARD\r\nTEL:1\r\n"), {u"A|||1|"_s});
    row("quoted-printable to the end of the file", "BEGIN:VCARD\nN;QUOTED-PRINTABLE:;=41=\n=42=ZZ=\n", {});
    row("quoted-printable that is none", card("N;ENCODING=QUOTED-PRINTABLE:;=4G=4\r\n"), {u"G=4||||"_s});
    row("an unknown character set", card("N;CHARSET=x-none:;\xD0\x90\r\n"), {u"А||||"_s});
    row("no character set, and no UTF-8", card("N:;Andr\xE9\r\n"), {u"André||||"_s});
    row("KOI8-R", card("N;CHARSET=KOI8-R:;\xE1\xCE\xCE\xC1\r\n"), {u"Анна||||"_s});
    row("a byte order mark", "\xEF\xBB\xBF" + card("N:;A\r\n"), {u"A||||"_s});
    QStringEncoder utf16(QStringEncoder::Utf16, QStringEncoder::Flag::WriteBom);
    const QByteArray wide = utf16.encode(QString::fromUtf8(card("N:;Анна 👋\r\n")));
    row("UTF-16", wide, {u"Анна 👋||||"_s});
    row("half of a UTF-16 mark", wide.left(1), {});
    row("right to left", card("N:;أنّا\r\n"), {u"أنّا||||"_s});
    row("a picture that isn't indented, 2.1", card("PHOTO;JPEG;BASE64:AAAA\r\nAAAA\r\n\r\nTEL:1\r\n"),
        {u"|||1|6"_s});
    row("a picture of 4.0", card("PHOTO:data:image/png;base64\\,AAAA\r\n"), {u"||||3"_s});
    row("a picture elsewhere", card("PHOTO;VALUE=uri:https://example.org/a.png\r\n"),
        {u"||||https://example.org/a.png"_s});
    row("two pictures", card("PHOTO;ENCODING=b:AAAA\r\nPHOTO;ENCODING=b:AAAAAAAA\r\n"), {u"||||3"_s});
    row("no picture at all", card("PHOTO;ENCODING=b:****\r\n"), {u"||||"_s});
}

void TestVCard::cards() {
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, expected);
    QCOMPARE(words(cardsOf(bytes)), expected);
}

namespace {

// One card whose picture is made up as it is read, and which tells how much was asked for at once.
class HugeCard : public QIODevice {
public:
    explicit HugeCard(qint64 pictureSize)
        : m_left(pictureSize) {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    bool isSequential() const override { return true; }
    qint64 largestRead = 0;

protected:
    qint64 readData(char *data, qint64 wanted) override {
        largestRead = std::max(largestRead, wanted);
        if (!m_head.isEmpty())
            return take(m_head, data, wanted);
        if (m_left > 0) {
            const qint64 size = std::min(wanted, m_left);
            memset(data, 'A', size_t(size));
            m_left -= size;
            return size;
        }
        return take(m_tail, data, wanted);
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    static qint64 take(QByteArray &from, char *data, qint64 wanted) {
        const qint64 size = std::min<qint64>(wanted, from.size());
        memcpy(data, from.constData(), size_t(size));
        from.remove(0, size);
        return size;
    }
    QByteArray m_head = "BEGIN:VCARD\r\nN:;A\r\nPHOTO;ENCODING=b:";
    qint64 m_left;
    QByteArray m_tail = "\r\nTEL:1\r\nEND:VCARD\r\n";
};

} // namespace

void TestVCard::aHugePictureIsNeverHeldWhole() {
    HugeCard device(70'000'000);
    const QList<VCard> found = readVCards(device);
    QCOMPARE(words(found), QStringList{u"A|||1|262144"_s});
    QVERIFY(device.largestRead < 1'000'000);
}

void TestVCard::aMillionBrokenLines() {
    const QByteArray many = QByteArray("=:;\"\r\n TEL\r\n").repeated(100'000);
    QCOMPARE(words(cardsOf(card(many + "N:;A\r\n"))), QStringList{u"A||||"_s});
}

ORVANE_TEST_MAIN(TestVCard)
#include "tst_vcard.moc"
