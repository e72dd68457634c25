// Whatever a stored form is made of, the client goes on, and the tab shows the form or says why
// not. Every run takes one form of a kind; with ORVO_ALL_FORMS=1 all of them.
#include "apps/client/FormView.h"
#include "apps/client/FormViewer.h"
#include "tests/client/FormFixture.h"
#include "tests/client/HostileForms.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QTimer>
#include <QtTest>

#include <algorithm>
#include <map>

using namespace orvo;
using namespace orvo::test;
using app::FormView;

namespace {

constexpr int blinkMs = 1000; ///< of the client on a busy machine with sanitizers

/// The longest time in which the event loop of the client did not turn.
class Heartbeat : public QObject {
public:
    Heartbeat() {
        connect(&m_timer, &QTimer::timeout, this,
                [this] { m_longest = std::max(m_longest, m_clock.restart()); });
        m_clock.start();
        m_timer.start(5);
    }
    qint64 longest() const { return std::max(m_longest, m_clock.elapsed()); }

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_longest = 0;
};

} // namespace

class TestHostileForms : public QObject {
    Q_OBJECT
private slots:
    void theTableIsLong() {
        const auto forms = hostileForms();
        QVERIFY(forms.size() >= 100);
        const auto usual = std::count_if(forms.begin(), forms.end(),
                                         [](const HostileForm& form) { return form.isUsual; });
        QVERIFY2(usual >= 20, qPrintable(QString::number(usual)));
        qInfo("%zu hostile forms, %d of them in every run", forms.size(), int(usual));
    }

    void theClientGoesOn_data() {
        QTest::addColumn<int>("number");
        const auto forms = hostileForms();
        const bool isAll = qEnvironmentVariableIsSet("ORVO_ALL_FORMS");
        for (int i = 0; i < int(forms.size()); ++i)
            if (isAll || forms[static_cast<size_t>(i)].isUsual)
                QTest::newRow(forms[static_cast<size_t>(i)].name.constData()) << i;
    }

    void theClientGoesOn() {
        QFETCH(int, number);
        const auto files = hostileForms()[static_cast<size_t>(number)].make();
        app::ProcessLimits limits;
        limits.answerMs = 5000;
        const Heartbeat heartbeat;
        auto window = std::make_unique<app::FormWindow>(
            qEnvironmentVariable("ORVO_PROGRAM_DIR") + "/orvo-form-view", "a", files,
            app::FormWindow::Look{}, limits, nullptr);
        window->show();
        FormView* view = currentView(*window);
        QTRY_VERIFY_WITH_TIMEOUT(view->state() != FormView::State::Waiting, timeoutMs);
        // Somebody uses it.
        QTest::mouseClick(canvasOf(*view), Qt::LeftButton, {}, canvasOf(*view)->rect().center());
        QTest::mouseClick(canvasOf(*view), Qt::LeftButton, {}, {20, 20});
        QTest::keyClick(canvasOf(*view), Qt::Key_Down);
        window->resize(900, 700);
        QTest::qWait(200);
        const auto* notice = view->findChild<QLabel*>("damageLabel");
        const auto* failure = view->findChild<QLabel*>("failureLabel");
        QByteArray end = "shown";
        if (view->state() == FormView::State::Failed) {
            QVERIFY2(failure->isVisible() && failure->text().contains(": "),
                     qPrintable(failure->text()));
            end = "ended: " + failure->text().section(": ", 1).toUtf8();
        } else if (notice->isVisible()) {
            QVERIFY(notice->text().size() > 10);
            end = notice->text().contains("повреждён") ? "refused" : "shown in part";
        }
        ++s_ends[end];
        qInfo("%s; the client was away for %lld ms at most. %s", end.constData(),
              heartbeat.longest(), qUtf8Printable(notice->text().left(150)));
        window.reset();
        s_longest = std::max(s_longest, heartbeat.longest());
        QVERIFY2(heartbeat.longest() < blinkMs, qPrintable(QString::number(heartbeat.longest())));
    }

    void cleanupTestCase() {
        for (const auto& [end, count] : s_ends)
            qInfo("%4d forms %s", count, end.constData());
        qInfo("the client was away for %lld ms at most", s_longest);
    }

private:
    static inline std::map<QByteArray, int> s_ends;
    static inline qint64 s_longest = 0;
};

QTEST_MAIN(TestHostileForms)
#include "tst_hostile_forms.moc"
