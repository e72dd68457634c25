#include "apps/client/StatusLine.h"

#include <QLabel>
#include <QTime>
#include <QToolButton>

namespace orvo::app {

namespace {

QLabel* makeLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setContentsMargins(4, 2, 10, 2);
    return label;
}

} // namespace

StatusLine::StatusLine(const QString& store, const QString& login, QWidget* parent)
    : QStatusBar(parent)
    , m_light(new QLabel(this))
    , m_connection(makeLabel({}, this))
    , m_storeLabel(makeLabel(QStringLiteral("Хранилище: %1").arg(store), this))
    , m_failure(new QToolButton(this))
    , m_store(store) {
    m_light->setFixedSize(10, 10);
    m_storeLabel->setObjectName(QStringLiteral("storeLabel"));
    auto* userLabel = makeLabel(QStringLiteral("Пользователь: %1").arg(login), this);
    userLabel->setObjectName(QStringLiteral("userLabel"));
    m_connection->setObjectName(QStringLiteral("connectionLabel"));
    setContentsMargins(8, 0, 4, 0);
    addWidget(m_light);
    addWidget(m_connection);
    addWidget(m_storeLabel);
    addWidget(userLabel);

    m_failure->setObjectName(QStringLiteral("failureButton"));
    m_failure->setCursor(Qt::PointingHandCursor);
    m_failure->setStyleSheet(
        QStringLiteral("QToolButton{background:#fbe9e7;color:#9c2a20;border:1px solid #e0a49d;"
                       "border-radius:4px;padding:2px 10px}"
                       "QToolButton:hover{background:#f6d9d5}"));
    m_failure->hide();
    addPermanentWidget(m_failure);
    connect(m_failure, &QToolButton::clicked, this, &StatusLine::acknowledge);
    setConnected(true, {});
}

void StatusLine::setConnected(bool up, const QString& reason) {
    m_light->setStyleSheet(QStringLiteral("background:%1;border-radius:5px")
                               .arg(up ? QStringLiteral("#3f9b5c") : QStringLiteral("#c9372c")));
    if (up)
        m_since.clear();
    else if (m_since.isEmpty())
        m_since = QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
    m_connection->setText(up ? QStringLiteral("Подключено")
                             : QStringLiteral("Нет связи с %1 с %2").arg(m_store, m_since));
    m_connection->setStyleSheet(up ? QString() : QStringLiteral("color:#9c2a20"));
    m_storeLabel->setVisible(up); // the other label names it then
    m_connection->setToolTip(reason);
}

void StatusLine::setFailure(const QString& text) {
    ++m_count;
    m_text = text.simplified();
    constexpr int widest = 520;
    const QString count = m_count > 1 ? QStringLiteral(" (всего %1)").arg(m_count) : QString();
    m_failure->setText(m_failure->fontMetrics().elidedText(m_text, Qt::ElideRight, widest) + count);
    m_failure->setToolTip(
        QStringLiteral("<p style='white-space:pre-wrap'>%1  %2</p>"
                       "<p>Щёлкните, чтобы убрать. Все сообщения — в журнале.</p>")
            .arg(QTime::currentTime().toString(QStringLiteral("HH:mm:ss")), text.toHtmlEscaped()));
    m_failure->show();
}

void StatusLine::acknowledge() {
    m_failure->hide();
    m_text.clear();
    m_count = 0;
}

} // namespace orvo::app
