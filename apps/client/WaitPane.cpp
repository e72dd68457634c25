#include "apps/client/WaitPane.h"

#include "frame/Text.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QSocketNotifier>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace orvo::app {

namespace {

const char mode[] = "--wait-pane";

class Pane : public QWidget {
public:
    explicit Pane(const QString& store);

private:
    void tick();
    void giveUp();

    QLabel* m_elapsed; // these: children
    QPushButton* m_button;
    QElapsedTimer m_clock;
};

Pane::Pane(const QString& store)
    : QWidget(nullptr, Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_elapsed(new QLabel(this))
    , m_button(new QPushButton(Text::tr("Не ждать"), this)) {
    setWindowTitle(Text::tr("Orvo — ожидание сервера"));
    setObjectName(QStringLiteral("waitPane"));
    setStyleSheet(QStringLiteral("#waitPane{background:palette(window);border:1px solid #8a8f98}"));
    setAttribute(Qt::WA_StyledBackground);
    auto* heading = new QLabel(Text::tr("<b>Хранилище не отвечает</b>"), this);
    auto* name = new QLabel(store, this);
    name->setTextFormat(Qt::PlainText);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(20, 16, 20, 16);
    column->addWidget(heading);
    column->addWidget(name);
    column->addWidget(m_elapsed);
    column->addSpacing(6);
    column->addWidget(m_button, 0, Qt::AlignRight);
    m_button->setToolTip(Text::tr("Прервать операцию (Esc)"));
    m_button->setDefault(true);
    connect(m_button, &QPushButton::clicked, this, &Pane::giveUp);
    auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &Pane::giveUp);
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &Pane::tick);
    timer->start(500);
    m_clock.start();
    tick();
}

void Pane::tick() {
    m_elapsed->setText(Text::tr("Ожидание: %1 с").arg(1 + m_clock.elapsed() / 1000));
}

void Pane::giveUp() {
    m_button->setEnabled(false);
    m_button->setText(Text::tr("Прерывается…"));
    std::puts("give up");
    std::fflush(stdout);
}

} // namespace

QStringList waitPaneArguments(const QRect& over, const QString& store) {
    return {QString::fromLatin1(mode),      QString::number(over.x()),
            QString::number(over.y()),      QString::number(over.width()),
            QString::number(over.height()), store};
}

bool isWaitPane(int argc, char** argv) {
    return argc == 7 && std::strcmp(argv[1], mode) == 0;
}

int runWaitPane(const QStringList& arguments) {
    Pane pane(arguments.value(6));
    const QRect over(arguments.value(2).toInt(), arguments.value(3).toInt(),
                     arguments.value(4).toInt(), arguments.value(5).toInt());
    pane.adjustSize();
    if (!over.isEmpty())
        pane.move(over.center() - pane.rect().center());
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &pane, [] {
        char byte = 0;
        if (::read(STDIN_FILENO, &byte, 1) <= 0) // whoever waited is gone
            QCoreApplication::quit();
    });
    pane.show();
    pane.raise();
    pane.activateWindow();
    return QApplication::exec();
}

} // namespace orvo::app
