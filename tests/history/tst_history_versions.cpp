// Kept versions of contents: putting one back loses nothing, and the history of a form or file
// tells of each of them.
#include "HistoryTest.h"

#include "history/ReturnVersion.h"

using namespace orvo::store;
using namespace orvo::history;
using namespace orvo::history::test;

class TestHistoryVersions : public HistoryTest {
    Q_OBJECT
public:
    using HistoryTest::HistoryTest;

private slots:
    void init() {
        HistoryTest::init();
        ORVO_OK(Batch("Users")
                    .insert("ua", {{"login_", "anna"}})
                    .insert("ub", {{"login_", "boris"}})
                    .send(*m_anna));
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("forms", {{"type_", 3}, {"caption", "Формы"}})
                    .insert("files", {{"type_", 4}, {"caption", "Документы"}})
                    .send(*m_anna));
        ORVO_OK(m_anna->formPut("", {{"", "a_", "first", 1.0}}));
        ORVO_OK(m_anna->formPut("", {{"", "a_", "second", 2.0}}));
    }
    void aVersionComesBackAsOneAction();
    void damagedBytesAreNotPutBack();
    void aFormThatAnotherHoldsIsLeftAlone();
    void whatWasReplacedMeanwhileStays();

private:
    QString contents() const { return snapshot().filter("MenuResourceFile|").join('\n'); }
    /// The newest one that is kept.
    KeptVersion version() const {
        std::vector<KeptVersion> versions;
        const Status status = m_anna->versions({}, &versions);
        return status.ok() && !versions.empty() ? versions.front() : KeptVersion();
    }
    int64_t position() const {
        int64_t seen = 0;
        return m_anna->logPosition(&seen).ok() ? seen : 0;
    }
    QString form() const { return QString::fromStdString(version().resource); }
};

void TestHistoryVersions::aVersionComesBackAsOneAction() {
    QVERIFY(contents().contains("second"));
    ORVO_OK(returnVersion(*m_anna, version().id, position(), {}));
    QVERIFY(contents().contains("first"));
    Inverse done;
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QVERIFY(contents().contains("second"));
}

void TestHistoryVersions::damagedBytesAreNotPutBack() {
    const int64_t id = version().id;
    QVERIFY(m_kind.byHand(m_kind.name() == "sqlite"
                              ? "UPDATE \"NciVersion\" SET \"data\" = x'4141414141';"
                              : "UPDATE \"NciVersionData\" SET \"data\" = 'AAAAA';"));
    const QStringList before = snapshot();
    const int64_t seen = position();
    const Status status = returnVersion(*m_anna, id, seen, {});
    QCOMPARE(status.code, int(Failed));
    QCOMPARE(QString::fromStdString(status.text),
             QString("Не возвращено: содержимое файла «a_»: прежнее содержимое повреждено"));
    QCOMPARE(snapshot(), before);
    QCOMPARE(position(), seen);
}

void TestHistoryVersions::aFormThatAnotherHoldsIsLeftAlone() {
    ORVO_OK(Batch("MenuResource")
                .update(form().toUtf8(), {{"UsersKey", "ub"}, {"dateTimeEdit", 1700000000.0}})
                .send(*m_boris));
    const QStringList before = snapshot();
    const int64_t seen = position();
    const Status status = returnVersion(*m_anna, version().id, seen, {{"boris", "Борисов Б."}});
    QCOMPARE(status.code, int(Refused));
    const QString text = QString::fromStdString(status.text);
    QVERIFY2(text.startsWith("Оставлено как есть: форма «a_»: занята (Борисов Б., 14.11.2023 "),
             qPrintable(text));
    QCOMPARE(snapshot(), before);
    QCOMPARE(position(), seen);
    ORVO_OK(returnVersion(*m_boris, version().id, position(), {})); // the lock is his own
    QVERIFY(contents().contains("first"));
}

void TestHistoryVersions::whatWasReplacedMeanwhileStays() {
    const int64_t id = version().id;
    const int64_t seen = position();
    ORVO_OK(m_boris->formPut("", {{"", "a_", "boris' own", 3.0}}));
    const QStringList before = snapshot();
    const Status status = returnVersion(*m_anna, id, seen, {{"boris", "Борисов Б."}});
    QCOMPARE(status.code, int(Outdated));
    const QString text = QString::fromStdString(status.text);
    QVERIFY2(text.startsWith("Не возвращено: содержимое файла «a_»: тем временем изменено "
                             "(Борисов Б., "),
             qPrintable(text));
    QCOMPARE(snapshot(), before);
    ORVO_OK(returnVersion(*m_anna, id, position(), {})); // looked at anew
    QVERIFY(contents().contains("first"));
}

int main(int argc, char** argv) {
    return orvo::store::test::runOnAllKinds<TestHistoryVersions>(argc, argv);
}

#include "tst_history_versions.moc"
