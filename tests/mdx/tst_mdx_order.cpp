// The order of texts, and the conversions of the code page.
#include "MdxTest.h"

#include <QTextCodec>
#include <QtTest>

using namespace mdxtest;
using orvo::mdx::compareText;
using orvo::mdx::toCp1251;
using orvo::mdx::toUtf8;

class TestMdxOrder : public QObject {
    Q_OBJECT

private slots:
    void textsStandInAlphabeticalOrder() {
        const char* const rising[] = {"",  " ", "!",   "(a", "-",   "_", "0", "1", "10",
                                      "2", "a", "A b", "a0", "ab",  "B", "z", "А", "аб",
                                      "Б", "е", "ель", "Ёж", "жук", "З", "и", "й", "Я"};
        std::vector<std::string> texts;
        for (const char* text : rising)
            texts.push_back(cp(text));
        for (size_t i = 0; i < texts.size(); ++i)
            for (size_t k = 0; k < texts.size(); ++k) {
                const int expected = i < k ? -1 : i > k ? 1 : 0;
                if (compareText(texts[i], texts[k]) != expected)
                    QFAIL(qPrintable(QString("%1 and %2").arg(i).arg(k)));
            }
    }

    void caseMakesNoDifference() {
        QCOMPARE(compareText("MixedCase", "mIXEDcASE"), 0);
        QCOMPARE(compareText(cp("ПРИВЕТ Ё"), cp("привет ё")), 0);
        QCOMPARE(compareText(cp("ЂЃЉЊЌЋЏЎЈҐЄЇІЅ"), cp("ђѓљњќћџўјґєїіѕ")), 0);
    }

    void ioFollowsIeAndPrecedesZhe() {
        QVERIFY(compareText(cp("е"), cp("ё")) < 0);
        QVERIFY(compareText(cp("Ё"), cp("ж")) < 0);
        QVERIFY(compareText(cp("еж"), cp("ёа")) < 0);
    }

    void signsComeByTheirCodeBeforeDigits() {
        // All that is neither digit nor letter, in the order of codes.
        std::string signs;
        for (int c = 1; c < 256; ++c) {
            const char one = char(c);
            const QString text = QTextCodec::codecForName("Windows-1251")->toUnicode(&one, 1);
            if (c != 0x98 && text[0].isLetterOrNumber() && text[0] != QChar(0xB5))
                continue;
            signs += one;
        }
        for (size_t i = 1; i < signs.size(); ++i)
            QVERIFY2(compareText(signs.substr(i - 1, 1), signs.substr(i, 1)) < 0,
                     qPrintable(QString::number(uint8_t(signs[i]), 16)));
        for (const char c : signs)
            QVERIFY2(compareText(std::string(1, c), "0") < 0,
                     qPrintable(QString::number(uint8_t(c), 16)));
    }

    void everyCodeConvertsAsTheCodecDoes() {
        QTextCodec* codec = QTextCodec::codecForName("Windows-1251");
        QVERIFY(codec);
        for (int c = 1; c < 256; ++c) {
            const std::string one(1, char(c));
            const QString expected =
                c == 0x98 ? QString(QChar(0x98)) : codec->toUnicode(&one[0], 1);
            QCOMPARE(QString::fromStdString(toUtf8(one)), expected);
            QCOMPARE(toCp1251(expected.toStdString()), one);
        }
    }

    void longTextsSurviveTheRoundTrip() {
        const std::string text =
            "Станция №5, ASCII in the middle of it «кавычки» — Ёлка… 0123456789";
        for (size_t begin = 0; begin < 12; ++begin) {
            const std::string padded = std::string(begin, 'x') + text;
            QCOMPARE(toUtf8(toCp1251(padded)), padded);
        }
        QCOMPARE(toCp1251("№5 Ё").size(), size_t(4));
    }

    void whatTheCodePageLacksBecomesAQuestionMark_data() {
        QTest::addColumn<QByteArray>("utf8");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("emoji") << QByteArray("a\xF0\x9F\x98\x80z") << QByteArray("a?z");
        QTest::newRow("hiragana") << QByteArray("\xE3\x81\x82") << QByteArray("?");
        QTest::newRow("e acute") << QByteArray("\xC3\xA9") << QByteArray("?");
        QTest::newRow("U+0080") << QByteArray("\xC2\x80") << QByteArray("?");
        QTest::newRow("U+0460") << QByteArray("\xD1\xA0") << QByteArray("?");
        QTest::newRow("lone continuation") << QByteArray("a\x80z") << QByteArray("a?z");
        QTest::newRow("cut sequence") << QByteArray("a\xD0") << QByteArray("a?");
        QTest::newRow("cut by ASCII") << QByteArray("\xD0z") << QByteArray("?z");
        QTest::newRow("overlong") << QByteArray("\xC0\xAF") << QByteArray("??");
        QTest::newRow("surrogate") << QByteArray("\xED\xA0\x80") << QByteArray("???");
        QTest::newRow("beyond Unicode") << QByteArray("\xF4\x90\x80\x80") << QByteArray("????");
        QTest::newRow("FF") << QByteArray("\xFF") << QByteArray("?");
        QTest::newRow("zero byte ends") << QByteArray("ab\0cd", 5) << QByteArray("ab");
        QTest::newRow("zero byte in a long run")
            << QByteArray("abcdefghijk\0mnopqrstuvwx", 24) << QByteArray("abcdefghijk");
    }
    void whatTheCodePageLacksBecomesAQuestionMark() {
        QFETCH(QByteArray, utf8);
        QFETCH(QByteArray, expected);
        QCOMPARE(QByteArray::fromStdString(toCp1251(utf8.toStdString())), expected);
    }
};

QTEST_APPLESS_MAIN(TestMdxOrder)
#include "tst_mdx_order.moc"
