#include "core/MhodText.h"
#include "core/TextEncoding.h"

#include <QTest>

using namespace kestrune;

Q_DECLARE_METATYPE(kestrune::TextEncoding)

class TestTextEncoding : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void validity_data()
    {
        QTest::addColumn<TextEncoding>("encoding");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("decodes");
        QTest::addRow("utf8 valid") << TextEncoding::utf8 << QByteArray("caff\xc3\xa8") << true;
        QTest::addRow("utf8 truncated sequence") << TextEncoding::utf8 << QByteArray("caff\xc3") << false;
        QTest::addRow("utf8 lone continuation") << TextEncoding::utf8 << QByteArray("\x80") << false;
        QTest::addRow("utf8 overlong slash") << TextEncoding::utf8 << QByteArray("\xc0\xaf") << false;
        QTest::addRow("utf8 encoded surrogate") << TextEncoding::utf8 << QByteArray("\xed\xa0\x80") << false;
        QTest::addRow("utf16 pair") << TextEncoding::utf16LE << QByteArray("\x3d\xd8\x00\xde", 4) << true;
        QTest::addRow("utf16 lone high surrogate") << TextEncoding::utf16LE << QByteArray("a\0\x3d\xd8", 4) << false;
        QTest::addRow("utf16 lone low surrogate") << TextEncoding::utf16LE << QByteArray("\x00\xde", 2) << false;
        QTest::addRow("ascii high byte") << TextEncoding::ascii << QByteArray("ab\x80") << false;
        QTest::addRow("mac roman any byte") << TextEncoding::macOSRoman << QByteArray("\xff\x80") << true;
        QTest::addRow("latin1 any byte") << TextEncoding::isoLatin1 << QByteArray("\xff\x80") << true;
    }

    void validity()
    {
        QFETCH(TextEncoding, encoding);
        QFETCH(QByteArray, bytes);
        QFETCH(bool, decodes);
        QCOMPARE(decodeText(bytes, encoding).has_value(), decodes);
    }

    void codePages_data()
    {
        QTest::addColumn<TextEncoding>("encoding");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("expected");
        QTest::addRow("mac roman euro") << TextEncoding::macOSRoman << QByteArray("\xdb") << QString(QChar(0x20AC));
        QTest::addRow("mac roman apple logo") << TextEncoding::macOSRoman << QByteArray("\xf0") << QString(QChar(0xF8FF));
        QTest::addRow("mac roman accents") << TextEncoding::macOSRoman << QByteArray("Caf\x8e") << "Café";
        QTest::addRow("windows-1252 euro") << TextEncoding::windows1252 << QByteArray("\x80") << QString(QChar(0x20AC));
        QTest::addRow("windows-1252 undefined byte") << TextEncoding::windows1252 << QByteArray("\x81")
                                                     << QString(QChar(0x81));
        QTest::addRow("latin1") << TextEncoding::isoLatin1 << QByteArray("\xe9\x80") << QStringLiteral("é\u0080");
        QTest::addRow("utf16 keeps byte order mark")
            << TextEncoding::utf16LE << QByteArray("\xff\xfeT\0", 4) << QStringLiteral("\uFEFFT");
        QTest::addRow("utf8 keeps byte order mark") << TextEncoding::utf8 << QByteArray("\xef\xbb\xbfT")
                                                    << QStringLiteral("\uFEFFT");
    }

    void codePages()
    {
        QFETCH(TextEncoding, encoding);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, expected);
        QCOMPARE(decodeText(bytes, encoding), std::optional<QString>(expected));
    }

    void rawChain_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("expected");
        QTest::addRow("utf16") << QByteArray("O\0K\0", 4) << "OK";
        QTest::addRow("utf8 after bad utf16") << QByteArray("\x41\xd8\x80\x41", 4) << QStringLiteral("A\u0600A");
        QTest::addRow("mac roman after both") << QByteArray("\x41\xd8\x41\x41", 4) << QStringLiteral("A\u00ffAA");
        QTest::addRow("one byte") << QByteArray("\x8e") << "é";
    }

    void rawChain()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, expected);
        QCOMPARE(decodeRawMhodText(bytes), expected);
    }

    void trimSet()
    {
        const QString messy = QStringLiteral("\uFEFF\u0000 \t\r\nTitle \uFFFD\u0000\u0000");
        QCOMPARE(trimMhodText(messy), QStringLiteral("Title"));
        // Only that set: other white space stays.
        QCOMPARE(trimMhodText(QStringLiteral("\u00A0Title\u2003")), QStringLiteral("\u00A0Title\u2003"));
    }
};

QTEST_APPLESS_MAIN(TestTextEncoding)
#include "tst_textencoding.moc"
