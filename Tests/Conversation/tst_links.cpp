// SPDX-License-Identifier: MIT
#include "Conversation/Messages/Links.h"
#include "Support/TestMain.h"

#include <QDesktopServices>

using namespace Qt::StringLiterals;

using namespace orvane;

class TestLinks : public QObject {
    Q_OBJECT

public Q_SLOTS:
    void opened(const QUrl &url) { m_opened.append(url.toString()); }

private Q_SLOTS:
    void linksEndWhereTheirAddressesDo_data();
    void linksEndWhereTheirAddressesDo();
    void whatMisleadsIsNoLink_data();
    void whatMisleadsIsNoLink();
    void onlyWebAddressesAreOpened_data();
    void onlyWebAddressesAreOpened();
    void manyLinksInAHugeText();

private:
    QStringList m_opened;
};

void TestLinks::linksEndWhereTheirAddressesDo_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("addresses");
    const auto row = [](const char *text, const QStringList &addresses) {
        QTest::newRow(text) << QString::fromUtf8(text) << addresses;
    };
    row("see https://a.example/x.", {"https://a.example/x"});
    row("(https://a.example/b_(c)) and", {"https://a.example/b_(c)"});
    row("\"http://a.example\", HTTPS://B.example/Q?x=1&y=[2]!",
        {"http://a.example", "https://b.example/Q?x=1&y=[2]"});
    row("https://a.example/путь,https://b.example",
        {"https://a.example/%D0%BF%D1%83%D1%82%D1%8C,https://b.example"});
    row("a\nhttps://a.example:8080/#f\tb", {"https://a.example:8080/#f"});
    row("«https://почта.example/»", {"https://xn--80a1acny.example/"});
    row("<b>https://a.example</b>", {"https://a.example"});
    row("**https://a.example**", {"https://a.example"});
    row("no link: http:// https://. ://x ahttps://a.example", {});
}

void TestLinks::linksEndWhereTheirAddressesDo() {
    QFETCH(QString, text);
    QFETCH(QStringList, addresses);
    QStringList found;
    for (const Link &link : Link::in(text)) {
        found.append(link.address());
        QVERIFY(text.mid(link.start, link.length).startsWith(u"http"_s, Qt::CaseInsensitive));
    }
    QCOMPARE(found, addresses);
}

void TestLinks::whatMisleadsIsNoLink_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("name before the host") << u"https://bank.example@evil.example/"_s;
    QTest::newRow("password too") << u"https://a:b@evil.example/"_s;
    QTest::newRow("script") << u"javascript:alert(1) data:text/html,x vbscript:x"_s;
    QTest::newRow("file") << u"file:///etc/passwd ftp://a.example smb://a.example"_s;
    QTest::newRow("percent sign in the host") << u"https://a%zz.example/"_s;
    QTest::newRow("no port") << u"https://a.example:99999999/"_s;
}

void TestLinks::whatMisleadsIsNoLink() {
    QFETCH(QString, text);
    QVERIFY(Link::in(text).isEmpty());
}

void TestLinks::onlyWebAddressesAreOpened_data() {
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("opens");
    QTest::newRow("https") << u"https://a.example/x"_s << true;
    QTest::newRow("file") << u"file:///etc/passwd"_s << false;
    QTest::newRow("more than an address") << u"https://a.example x"_s << false;
    QTest::newRow("turned around") << u"https://a.example/\u202Egpj.exe"_s << false;
    QTest::newRow("empty") << QString() << false;
}

void TestLinks::onlyWebAddressesAreOpened() {
    QFETCH(QString, address);
    QFETCH(bool, opens);
    m_opened.clear();
    for (const char *scheme : {"http", "https", "file"})
        QDesktopServices::setUrlHandler(QLatin1StringView(scheme), this, "opened");
    Link::open(address);
    for (const char *scheme : {"http", "https", "file"})
        QDesktopServices::unsetUrlHandler(QLatin1StringView(scheme));
    QCOMPARE(m_opened, opens ? QStringList{address} : QStringList());
}

void TestLinks::manyLinksInAHugeText() {
    QCOMPARE(Link::in(u"https://a.example/b "_s.repeated(20'000)).size(), 20'000);
    // One address as long as a message may be, and one that never gets to its host.
    QCOMPARE(Link::in(u"https://a.example/"_s + QString(1'000'000, u'(')).size(), 1);
    QCOMPARE(Link::in(u"https://a.example/(b)"_s + QString(1'000'000, u')')).first().address(),
             u"https://a.example/(b)"_s);
    QVERIFY(Link::in(u"http:/"_s.repeated(200'000)).isEmpty());
}

ORVANE_TEST_MAIN(TestLinks)
#include "tst_links.moc"
