#include "Clock.h"

#include <QDateTime>
#include <QLabel>

Clock::Clock(COrvoCliApp* app) : COrvoCliMod(app), m_time(new QLabel(this)) {
    m_time->setObjectName(QStringLiteral("clockTime"));
    m_time->setAlignment(Qt::AlignCenter);
    QFont large = m_time->font();
    large.setPointSize(48);
    m_time->setFont(large);
    setCentralWidget(m_time);
    connect(&m_timer, &QTimer::timeout, this, &Clock::show);
}

void Clock::SetParamMod(QString name, QString value) {
    constexpr int longest = 3600;
    if (name == QStringLiteral("Период"))
        m_seconds = qBound(1, value.toInt(), longest);
}

bool Clock::ModuleStart() {
    SetModTitle(QStringLiteral("Единое время"), {});
    show();
    m_timer.start(m_seconds * 1000);
    return true;
}

void Clock::show() {
    m_time->setText(QDateTime::currentDateTime().toString(QStringLiteral("HH:mm:ss\ndd.MM.yyyy")));
}
