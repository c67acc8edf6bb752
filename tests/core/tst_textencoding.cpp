#include "core/MhodText.h"
#include "core/TextEncoding.h"

#include <QTest>

using namespace kestrune;

Q_DECLARE_METATYPE(kestrune::TextEncoding)

class TestTextEncoding : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void decoders_data()
    {
        QTest::addColumn<TextEncoding>("encoding");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<std::optional<QString>>("expected"); // none: the bytes do not decode
        const std::optional<QString> none;
        const auto row = [](const char *name, TextEncoding encoding, const QByteArray &bytes, std::optional<QString> text) {
            QTest::newRow(name) << encoding << bytes << text;
        };
        row("utf8", TextEncoding::utf8, "caff\xc3\xa8", "caffè");
        row("utf8 truncated sequence", TextEncoding::utf8, "caff\xc3", none);
        row("utf8 lone continuation", TextEncoding::utf8, "\x80", none);
        row("utf8 overlong slash", TextEncoding::utf8, "\xc0\xaf", none);
        row("utf8 encoded surrogate", TextEncoding::utf8, "\xed\xa0\x80", none);
        row("utf8 keeps byte order mark", TextEncoding::utf8, "\xef\xbb\xbfT", QStringLiteral("\uFEFFT"));
        row("utf16 pair", TextEncoding::utf16LE, QByteArray("\x3d\xd8\x00\xde", 4), QStringLiteral("\U0001F600"));
        row("utf16 lone high surrogate", TextEncoding::utf16LE, QByteArray("a\0\x3d\xd8", 4), none);
        row("utf16 lone low surrogate", TextEncoding::utf16LE, QByteArray("\x00\xde", 2), none);
        row("utf16 keeps byte order mark", TextEncoding::utf16LE, QByteArray("\xff\xfeT\0", 4), QStringLiteral("\uFEFFT"));
        row("ascii high byte", TextEncoding::ascii, "ab\x80", none);
        row("mac roman euro, apple, accent", TextEncoding::macOSRoman, "\xdb\xf0\x8e", QStringLiteral("\u20AC\uF8FF\u00E9"));
        row("windows-1252 euro and undefined byte", TextEncoding::windows1252, "\x80\x81", QStringLiteral("\u20AC\u0081"));
        row("latin1 any byte", TextEncoding::isoLatin1, "\xe9\x80", QStringLiteral("é\u0080"));
    }

    void decoders()
    {
        QFETCH(TextEncoding, encoding);
        QFETCH(QByteArray, bytes);
        QTEST(decodeText(bytes, encoding), "expected");
    }

    void rawChain_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("expected");
        QTest::addRow("utf16") << QByteArray("O\0K\0", 4) << "OK";
        QTest::addRow("one utf16 character") << QByteArray("\xe9\0", 2) << "é";
        QTest::addRow("utf8 after bad utf16") << QByteArray("\x41\xd8\x80\x41", 4) << QStringLiteral("A\u0600A");
        QTest::addRow("mac roman after both") << QByteArray("\x41\xd8\x41\x41", 4) << QStringLiteral("A\u00ffAA");
    }

    void rawChain()
    {
        QFETCH(QByteArray, bytes);
        QTEST(decodeRawMhodText(bytes), "expected");
    }

};

QTEST_APPLESS_MAIN(TestTextEncoding)
#include "tst_textencoding.moc"
