// What users read, against its translation: every text that the sources have, and no other.
#include <QDirIterator>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

#include <algorithm>

namespace {

struct Message {
    QString source, comment, translation;
    bool isDone = false;
};
using Messages = QMap<QString, Message>; ///< by context, text and comment

const QRegularExpression& russian() {
    static const QRegularExpression letters(QStringLiteral("[А-Яа-яЁё]"));
    return letters;
}

QString root() {
    return qEnvironmentVariable("ORVO_SOURCE_DIR") + '/';
}

QByteArray read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Messages messagesOf(const QString& path) {
    Messages all;
    QXmlStreamReader xml(read(path));
    QString context;
    Message message;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement() && xml.name() == QLatin1String("name"))
            context = xml.readElementText();
        else if (xml.isStartElement() && xml.name() == QLatin1String("message"))
            message = {};
        else if (xml.isStartElement() && xml.name() == QLatin1String("source"))
            message.source = xml.readElementText();
        else if (xml.isStartElement() && xml.name() == QLatin1String("comment"))
            message.comment = xml.readElementText();
        else if (xml.isStartElement() && xml.name() == QLatin1String("translation")) {
            message.isDone = !xml.attributes().hasAttribute(QLatin1String("type"));
            message.translation = xml.readElementText();
        } else if (xml.isEndElement() && xml.name() == QLatin1String("message"))
            all.insert(context + '|' + message.source + '|' + message.comment, message);
    }
    return all;
}

/// The places "%1" of a text, each as often as it stands there.
QStringList placesOf(const QString& text) {
    QStringList places;
    auto found = QRegularExpression(QStringLiteral("%[1-9]")).globalMatch(text);
    while (found.hasNext())
        places << found.next().captured();
    places.sort();
    return places;
}

QString blanksBefore(const QString& text) {
    return QRegularExpression(QStringLiteral("^\\s*")).match(text).captured();
}

QString blanksBehind(const QString& text) {
    return QRegularExpression(QStringLiteral("\\s*$")).match(text).captured();
}

QString unescaped(QString literal) {
    return literal.replace(QLatin1String("\\n"), QLatin1String("\n"))
        .replace(QLatin1String("\\t"), QLatin1String("\t"))
        .replace(QLatin1String("\\\""), QLatin1String("\""))
        .replace(QLatin1String("\\\\"), QLatin1String("\\"));
}

/// The string literals of a source, neighbours joined, without those of comments.
QStringList literalsOf(const QString& code) {
    static const QRegularExpression token(
        QStringLiteral(
            R"RE(//[^\n]*|/\*.*?\*/|'(?:[^'\\\n]|\\.)+'|((?:"(?:[^"\\\n]|\\.)*"\s*)+))RE"),
        QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression seam(QStringLiteral("\"\\s*\""));
    QStringList all;
    auto found = token.globalMatch(code);
    while (found.hasNext()) {
        const QString joined = found.next().captured(1).trimmed();
        if (!joined.isEmpty())
            all << unescaped(QString(joined.mid(1, joined.size() - 2)).remove(seam));
    }
    return all;
}

/// Names of data, letters of keys and alphabets, and what two helper programs say to somebody who
/// starts them by hand, before there is an application.
bool staysRussian(const QString& file, const QString& literal) {
    static const QStringList files{"frame/Vocabulary.h", "platform/store/Names.h",
                                   "catalogue/SearchTexts.cpp", "apps/admin/demo/"};
    for (const QString& one : files)
        if (file.startsWith(one))
            return true;
    return literal == QStringLiteral("ЙЦУКЕНГШЩЗФЫВАПРОЛДЯЧСМИТЬ") ||
           literal.startsWith(QLatin1String("orvo-client: ")) ||
           literal.startsWith(QLatin1String("orvo-form-view: ")) ||
           file == QLatin1String("apps/completion/Completion.cpp") || // words of both languages
           (file == QLatin1String("apps/admin/CommandLine.cpp") && // Qt's texts, which are English
            QStringList{"неизвестный ключ «%1»", "неизвестные ключи: %1", "после «%1» нет значения",
                        "ключ «%1» не принимает значения", "Ключи:", "Аргументы:"}
                .contains(literal));
}

} // namespace

class TestTexts : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;
    Messages m_stored, m_collected;

private slots:
    void initTestCase() {
        const QString stored = root() + "apps/language/orvo_en.ts";
        const QString fresh = m_dir.filePath("orvo_en.ts");
        QVERIFY(QFile::copy(stored, fresh));
        QProcess collect;
        collect.start(root() + "scripts/update-texts", {fresh});
        QVERIFY(collect.waitForFinished(120000));
        QCOMPARE(collect.exitCode(), 0);
        m_stored = messagesOf(stored);
        m_collected = messagesOf(fresh);
        QVERIFY(m_stored.size() > 1500);
    }

    void everyTextIsTranslated() {
        for (auto one = m_collected.begin(); one != m_collected.end(); ++one) {
            QVERIFY2(m_stored.contains(one.key()),
                     qPrintable("scripts/update-texts has not collected: " + one.key()));
            QVERIFY2(one->isDone && !one->translation.isEmpty(),
                     qPrintable("not translated: " + one.key()));
        }
    }

    void noTranslationIsLeftOver() {
        for (const QString& key : m_stored.keys())
            QVERIFY2(m_collected.contains(key), qPrintable("no source has: " + key));
    }

    void everyRussianTextOfTheSourcesIsCollected() {
        QSet<QString> texts;
        for (const Message& one : qAsConst(m_collected))
            texts << one.source << one.comment; // which says what is meant, in Russian too
        int looked = 0;
        QProcess folders;
        folders.start(root() + "scripts/folders", QStringList());
        QVERIFY(folders.waitForFinished());
        for (const QByteArray& folder : folders.readAllStandardOutput().trimmed().split('\n')) {
            QDirIterator files(root() + folder, {"*.cpp", "*.h"}, QDir::Files,
                               QDirIterator::Subdirectories);
            while (files.hasNext()) {
                const QString path = files.next(), name = path.mid(root().size());
                for (const QString& literal : literalsOf(QString::fromUtf8(read(path))))
                    if (literal.contains(russian()) && !staysRussian(name, literal)) {
                        ++looked;
                        QVERIFY2(texts.contains(literal),
                                 qPrintable(name + ": give it to Text::tr: " + literal));
                    }
            }
        }
        QVERIFY2(looked > 1500, qPrintable(QString::number(looked)));
    }

    void aTranslationKeepsWhatTheTextIsMadeOf() {
        for (const Message& one : qAsConst(m_stored)) {
            const QByteArray what = (one.source + " -> " + one.translation).toUtf8();
            QVERIFY2(placesOf(one.source) == placesOf(one.translation), what.constData());
            QVERIFY2(blanksBefore(one.source) == blanksBefore(one.translation), what.constData());
            QVERIFY2(blanksBehind(one.source) == blanksBehind(one.translation), what.constData());
            QVERIFY2(one.source.contains('&') == one.translation.contains('&'), what.constData());
        }
    }

    /// But for the names of records, which are data.
    void noRussianIsLeftInEnglish() {
        for (const Message& one : qAsConst(m_stored)) {
            QString text = one.translation;
            for (const char* name : {"модули", "функции", "формы отображения"})
                text.remove(QStringLiteral("“%1”").arg(QString::fromUtf8(name)));
            QVERIFY2(!text.contains(russian()) && !text.contains(QStringLiteral("«")),
                     qPrintable(one.translation));
        }
    }
};

QTEST_GUILESS_MAIN(TestTexts)
#include "tst_texts.moc"
