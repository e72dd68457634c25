// TypedTexts.h: every text that the engineers of a random run have typed, and what became of it.
// Each bears a number of its own, "Насос~17~", by which it is found again.
//
// A text that was typed is, at any time, in an open edit, in the store in that field of that record
// (or overwritten there: the change log has it), or among the unwritten requests; or its engineer
// has dropped it, or has been told that it was not taken.
#ifndef ORVO_TESTS_MENU_TYPEDTEXTS_H
#define ORVO_TESTS_MENU_TYPEDTEXTS_H

#include "tests/menu/ModuleFixture.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QRegularExpression>
#include <QSet>

namespace orvo::test {

class TypedTexts {
public:
    explicit TypedTexts(TestStore& store) : m_store(store.connect("texts")) {}

    /// A text that is about to be typed into that cell; it takes the place of what the same
    /// engineer typed there before, but for what stands in his unwritten requests. A cell is
    /// "<key>/<row of the passport>" or "<key>/<field>"; "<key>" alone is a name in a tree.
    QString typing(int engineer, const QString& cell, const QString& word,
                   const QString& unwritten) {
        const QSet<int> waiting = numbersIn(unwritten);
        for (auto text = m_pending.begin(); text != m_pending.end();) {
            if (text->engineer != engineer || text->cell != cell) {
                ++text;
            } else if (waiting.contains(text.key())) {
                text->typedOver = true; // in the list too, if the new text gets there
                ++text;
            } else {
                text = m_pending.erase(text);
                ++overtyped;
            }
        }
        const int number = ++m_last;
        m_pending[number] = {engineer, cell, true, false};
        return word + '~' + QString::number(number) + '~';
    }
    /// The engineer has dropped these.
    void drop(const QString& texts) {
        for (const int number : numbersIn(texts))
            dropped += m_pending.remove(number);
    }
    /// The engineer has deleted that record.
    void dropRecord(int engineer, const QString& key) {
        for (auto text = m_pending.begin(); text != m_pending.end();) {
            if (text->engineer == engineer && text->cell.section('/', 0, 0) == key) {
                text = m_pending.erase(text);
                ++dropped;
            } else {
                ++text;
            }
        }
    }
    static QSet<int> numbersIn(const QString& texts) {
        static const QRegularExpression mark("~(\\d+)~");
        QSet<int> numbers;
        for (auto match = mark.globalMatch(texts); match.hasNext();)
            numbers << match.next().captured(1).toInt();
        return numbers;
    }

    /// The first text of the engineer that is nowhere. `kept`: all that stands in his open edits
    /// and unwritten requests. `boxes`: what his windows say at this moment, and what they have put
    /// into the log since the last call. A text that was typed since then and is nowhere was not
    /// taken by its field, which says why.
    QString missing(int engineer, const QString& kept, const QString& boxes) {
        readLog();
        const QSet<int> here = numbersIn(kept);
        const QSet<int> said = numbersIn(boxes);
        for (auto text = m_pending.begin(); text != m_pending.end();) {
            if (text->engineer != engineer) {
                ++text;
            } else if (m_logged.value(text.key()).contains(placeOf(text->cell))) {
                ++stored;
                text = m_pending.erase(text);
            } else if (here.contains(text.key())) {
                text->fresh = false;
                ++text;
            } else if (text->fresh && !boxes.isEmpty()) {
                ++notTaken;
                text = m_pending.erase(text);
            } else if (said.contains(text.key())) {
                ++told;
                text = m_pending.erase(text);
            } else if (text->typedOver) {
                ++overtyped;
                text = m_pending.erase(text);
            } else {
                return QString("typed and gone: ~%1~ in %2; stored in: %3")
                    .arg(text.key())
                    .arg(text->cell, QStringList(m_logged.value(text.key()).values()).join(' '));
            }
        }
        return {};
    }
    /// Texts of which it is not settled what becomes of them.
    int pending() const { return m_pending.size(); }
    int typed() const { return m_last; }

    int stored = 0;
    int dropped = 0;
    int overtyped = 0; ///< before they were stored
    int notTaken = 0;  ///< the field did not take them, and said so
    int told = 0;      ///< taken, and given up by a window with a word

private:
    struct Text {
        int engineer;
        QString cell;
        bool fresh;     ///< typed since the last look
        bool typedOver; ///< in the same cell, while it stood in the unwritten requests
    };
    void readLog() {
        std::vector<store::Change> changes;
        if (!m_store->readLog(m_cursor, 100000, &changes).ok())
            qFatal("no change log");
        for (const store::Change& change : changes) {
            m_cursor = change.id;
            const QString key = QString::fromStdString(change.key).toCaseFolded();
            const QJsonObject after =
                QJsonDocument::fromJson(QByteArray::fromStdString(change.after)).object();
            for (auto field = after.begin(); field != after.end(); ++field)
                for (const int number : numbersIn(field->toString()))
                    m_logged[number] << key + '/' + field.key();
        }
    }
    /// Record and field of a cell.
    static QString placeOf(const QString& cell) {
        static const QMap<QString, QString> fields{
            {"", "caption"}, {"name", "caption"}, {"object", "name_"}, {"icon", "ico"}};
        const QString row = cell.section('/', 1);
        return cell.section('/', 0, 0).toCaseFolded() + '/' + fields.value(row, row);
    }

    std::unique_ptr<store::Store> m_store;
    int64_t m_cursor = 0;
    QMap<int, QSet<QString>> m_logged; ///< where each was stored
    QMap<int, Text> m_pending;
    int m_last = 0;
};

} // namespace orvo::test

#endif
