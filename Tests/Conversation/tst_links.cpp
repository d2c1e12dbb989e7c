// SPDX-License-Identifier: MIT
#include "Conversation/Messages/Links.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QDesktopServices>

using namespace orvane;
using namespace Qt::StringLiterals;

class TestLinks : public QObject {
    Q_OBJECT

public Q_SLOTS:
    void opened(const QUrl &url) { m_opened.append(url.toString()); }

private Q_SLOTS:
    void linksEndWhereTheirAddressesDo() {
        const auto row = [](const QString &text, const QStringList &addresses = {}) {
            const InRow named(text.toUtf8());
            QStringList found;
            for (const Link &link : Link::in(text)) {
                found.append(link.address());
                QVERIFY(text.mid(link.start, link.length).startsWith("http"_L1, Qt::CaseInsensitive));
            }
            QCOMPARE(found, addresses);
        };
        row(u"see https://a.example/x."_s, {"https://a.example/x"});
        row(u"(https://a.example/b_(c)) and"_s, {"https://a.example/b_(c)"});
        row(u"\"http://a.example\", HTTPS://B.example/Q?x=1&y=[2]!"_s,
            {"http://a.example", "https://b.example/Q?x=1&y=[2]"});
        row(u"https://a.example/путь,https://b.example"_s,
            {"https://a.example/%D0%BF%D1%83%D1%82%D1%8C,https://b.example"});
        row(u"a\nhttps://a.example:8080/#f\tb"_s, {"https://a.example:8080/#f"});
        row(u"«https://почта.example/»"_s, {"https://xn--80a1acny.example/"});
        row(u"<b>https://a.example</b>"_s, {"https://a.example"});
        row(u"**https://a.example**"_s, {"https://a.example"});
        row(u"no link: http:// https://. ://x ahttps://a.example"_s);
        // What misleads is none: a name or a password before the host, a script, a file, no host, no port.
        row(u"https://bank.example@evil.example/"_s);
        row(u"https://a:b@evil.example/"_s);
        row(u"javascript:alert(1) data:text/html,x vbscript:x"_s);
        row(u"file:///etc/passwd ftp://a.example smb://a.example"_s);
        row(u"https://a%zz.example/"_s);
        row(u"https://a.example:99999999/"_s);
    }

    void onlyWebAddressesAreOpened() {
        const auto row = [this](const QString &address, bool opens) {
            const InRow named(address.toUtf8());
            m_opened.clear();
            for (const auto &scheme : {u"http"_s, u"https"_s, u"file"_s})
                QDesktopServices::setUrlHandler(scheme, this, "opened");
            Link::open(address);
            for (const auto &scheme : {u"http"_s, u"https"_s, u"file"_s})
                QDesktopServices::unsetUrlHandler(scheme);
            QCOMPARE(m_opened, opens ? QStringList{address} : QStringList());
        };
        row(u"https://a.example/x"_s, true);
        row(u"file:///etc/passwd"_s, false);
        row(u"https://a.example x"_s, false);
        row(u"https://a.example/\u202Egpj.exe"_s, false);
        row(u""_s, false);
    }

    void manyLinksInAHugeText() {
        const QString many = u"https://a.example/b "_s.repeated(20'000);
        QCOMPARE(Link::in(many).size(), 20'000);
        QCOMPARE(Link::firstAddressesIn(many + u"https://far.example"_s), QStringList{"https://a.example/b"});
        QCOMPARE(
            Link::firstAddressesIn(u"http://a.b http://a.c http://a.b http://a.d http://a.e"_s).join(' '),
            "http://a.b http://a.c http://a.d");
        // One address as long as a message may be, and one that never gets to its host.
        QCOMPARE(Link::in(u"https://a.example/"_s + QString(1'000'000, u'(')).size(), 1);
        QCOMPARE(Link::in(u"https://a.example/(b)"_s + QString(1'000'000, u')')).first().address(),
                 "https://a.example/(b)");
        QVERIFY(Link::in(u"http:/"_s.repeated(200'000)).isEmpty());
    }

private:
    QStringList m_opened;
};

ORVANE_TEST_MAIN(TestLinks)
#include "tst_links.moc"
