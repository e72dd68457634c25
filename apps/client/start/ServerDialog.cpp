#include "apps/client/start/ServerDialog.h"

#include "apps/client/start/SecretService.h"
#include "frame/Text.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QUrl>

#include <memory>

namespace orvo::app {

namespace {

constexpr int usualPort = 5432;

QString encoded(const QString& text) {
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

/// Ways to the store that must not wait for ever before the user sees what is wrong.
constexpr char testLimit[] = "connect_timeout=10";

} // namespace

ServerDialog::ServerDialog(const QString& user, QWidget* parent)
    : QDialog(parent)
    , m_host(new QLineEdit(QStringLiteral("localhost"), this))
    , m_database(new QLineEdit(QStringLiteral("orvo"), this))
    , m_user(new QLineEdit(user, this))
    , m_typed(new QLineEdit(this))
    , m_port(new QSpinBox(this))
    , m_keep(new QComboBox(this))
    , m_result(new QLabel(this)) {
    setObjectName(QStringLiteral("serverDialog"));
    setWindowTitle(Text::tr("Хранилище на сервере"));
    m_host->setObjectName(QStringLiteral("serverHost"));
    m_host->setToolTip(Text::tr("Имя или адрес; несколько, через запятую: подходит первый, "
                                "который принимает запись"));
    m_database->setObjectName(QStringLiteral("serverDatabase"));
    m_user->setObjectName(QStringLiteral("serverUser"));
    m_typed->setObjectName(QStringLiteral("serverPassword"));
    m_typed->setEchoMode(QLineEdit::Password);
    m_port->setObjectName(QStringLiteral("serverPort"));
    m_port->setRange(1, 65535);
    m_port->setValue(usualPort);
    m_keep->setObjectName(QStringLiteral("serverKeep"));
    m_keep->addItem(Text::tr("до конца работы"), int(Keep::Nowhere));
    if (secrets::areHere())
        m_keep->addItem(Text::tr("в хранилище паролей рабочего стола"), int(Keep::SecretService));
    m_keep->addItem(Text::tr("в файле %1").arg(passwordFile()), int(Keep::PasswordFile));
    m_keep->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_result->setObjectName(QStringLiteral("serverResult"));
    m_result->setWordWrap(true);
    m_result->setTextFormat(Qt::PlainText);
    m_result->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_result->setMinimumHeight(3 * fontMetrics().lineSpacing());
    m_result->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    auto* form = new QFormLayout(this);
    form->addRow(Text::tr("&Сервер:"), m_host);
    form->addRow(Text::tr("По&рт:"), m_port);
    form->addRow(Text::tr("&База данных:"), m_database);
    form->addRow(Text::tr("&Пользователь:"), m_user);
    form->addRow(Text::tr("П&ароль:"), m_typed);
    form->addRow(Text::tr("&Запомнить:"), m_keep);
    form->addRow(m_result);
    auto* buttons = new QDialogButtonBox(this);
    m_test = buttons->addButton(Text::tr("Проверит&ь"), QDialogButtonBox::ActionRole);
    m_test->setObjectName(QStringLiteral("serverTest"));
    m_open = buttons->addButton(Text::tr("&Открыть"), QDialogButtonBox::AcceptRole);
    m_open->setObjectName(QStringLiteral("serverOpen"));
    m_open->setDefault(true);
    buttons->addButton(Text::tr("Отмена"), QDialogButtonBox::RejectRole);
    form->addRow(buttons);
    connect(m_test, &QPushButton::clicked, this, &ServerDialog::test);
    connect(buttons, &QDialogButtonBox::accepted, this, &ServerDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    for (QLineEdit* line : {m_host, m_database, m_user, m_typed})
        connect(line, &QLineEdit::textChanged, this, &ServerDialog::changed);
    connect(m_port, QOverload<int>::of(&QSpinBox::valueChanged), this, &ServerDialog::changed);
    setTabOrder(m_host, m_port); // in the order of the rows
    setTabOrder(m_port, m_database);
    m_host->selectAll();
    changed();
    resize(520, sizeHint().height());
}

ServerDialog::~ServerDialog() = default;

/// What was said of a test is not true of another address.
void ServerDialog::changed() {
    m_thread.reset();
    say({});
    const bool isWhole = !hosts(false).isEmpty() && !m_database->text().trimmed().isEmpty() &&
                         !m_user->text().trimmed().isEmpty();
    m_test->setEnabled(isWhole);
    m_open->setEnabled(isWhole);
    m_keep->setEnabled(!m_typed->text().isEmpty());
}

QString ServerDialog::hosts(bool withPort) const {
    QStringList all;
    for (const QString& part : m_host->text().split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QString host = part.trimmed();
        if (host.isEmpty())
            continue;
        // An address of the sixth version has colons of its own.
        QString one = host.contains(QLatin1Char(':')) ? QLatin1Char('[') + host + QLatin1Char(']')
                                                      : encoded(host);
        if (withPort)
            one += QLatin1Char(':') + QString::number(m_port->value());
        all << one;
    }
    return all.join(QLatin1Char(','));
}

QString ServerDialog::address() const {
    return QStringLiteral("postgresql://%1@%2/%3")
        .arg(encoded(m_user->text().trimmed()), hosts(true), encoded(m_database->text().trimmed()));
}

ServerLogin ServerDialog::login() const {
    return {m_host->text().section(QLatin1Char(','), 0, 0).trimmed(),
            QString::number(m_port->value()), m_database->text().trimmed(),
            m_user->text().trimmed()};
}

void ServerDialog::say(const QString& text) {
    m_result->setText(text);
}

void ServerDialog::test() {
    std::string url = (address() + QLatin1Char('?') + QLatin1String(testLimit)).toStdString();
    if (!m_typed->text().isEmpty())
        url += "&password=" + encoded(m_typed->text()).toStdString();
    m_test->setEnabled(false);
    say(Text::tr("Проверяется…"));
    struct Found {
        QString login;
        bool mayWrite = false;
    };
    auto found = std::make_shared<Found>();
    m_thread = std::make_unique<StoreThread>([url](store::Status* status) {
        store::OpenOptions how;
        how.allowReadOnly = true;
        return store::openMaintained(url, how, status);
    });
    m_thread->run(
        this,
        [found](store::MaintainedStore& store) {
            found->login = QString::fromStdString(store.login());
            found->mayWrite = store.mayWrite();
            return store::Status();
        },
        [this, found](const store::Status& status) {
            tested(status, found->login, found->mayWrite);
        });
}

void ServerDialog::tested(const store::Status& status, const QString& login, bool mayWrite) {
    m_test->setEnabled(true);
    if (!status.ok())
        say(QString::fromStdString(status.text));
    else if (mayWrite)
        say(Text::tr("Хранилище открыто: пользователь %1 может читать и писать.").arg(login));
    else
        say(Text::tr("Хранилище открыто: пользователь %1 может только читать.").arg(login));
}

/// Where that is wanted. False, with the reason, if it was not kept.
bool ServerDialog::keep(QString* error) {
    const auto where = static_cast<Keep>(m_keep->currentData().toInt());
    if (where == Keep::Nowhere || !m_keep->isEnabled())
        return true;
    if (where == Keep::SecretService)
        return secrets::keep(address(), m_password, error);
    ServerLogin one = login();
    for (const QString& host : m_host->text().split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        one.host = host.trimmed();
        if (!one.host.isEmpty() && !keepPassword(one, m_password, error))
            return false;
    }
    m_password.clear();
    return true;
}

void ServerDialog::accept() {
    if (!m_open->isEnabled())
        return;
    m_password = m_typed->text();
    QString error;
    if (keep(&error))
        QDialog::accept();
    else
        say(error);
}

} // namespace orvo::app
