#include "apps/client/start/StorePage.h"

#include "apps/client/Installation.h"
#include "apps/client/start/RecentStores.h"
#include "apps/client/start/SecretService.h"
#include "apps/client/start/ServerDialog.h"
#include "apps/client/start/ServerPassword.h"
#include "frame/Text.h"
#include "platform/store/StoreUrl.h"

#include <QAction>
#include <QCommandLinkButton>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace orvo::app {

namespace {

QString fileOf(const QString& address) {
    store::StoreUrl url;
    return url.parse(address.toStdString()).ok() ? QString::fromStdString(url.file()) : QString();
}

QLabel* textOn(QWidget* parent, const char* name) {
    auto* label = new QLabel(parent); // owned by the parent
    label->setObjectName(QLatin1String(name));
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText); // what servers say may look like markup
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->hide();
    return label;
}

} // namespace

StorePage::StorePage(const QString& ownFile, const QString& user, QWidget* parent)
    : QDialog(parent)
    , m_ownFile(ownFile)
    , m_user(user)
    , m_maker(installation::adminProgram())
    , m_reason(textOn(this, "storeReason"))
    , m_progress(textOn(this, "storeProgress"))
    , m_recent(new QListWidget(this))
    , m_recentPart(new QWidget(this))
    , m_ways(new QWidget(this))
    , m_waysColumn(new QVBoxLayout(m_ways)) {
    setObjectName(QStringLiteral("storePage"));
    setWindowTitle(Text::tr("Orvo: какое хранилище открыть"));
    auto* page = new QVBoxLayout(this);
    page->addWidget(m_reason);
    page->addWidget(m_recentPart, 1);
    page->addWidget(m_ways);
    page->addWidget(m_progress);
    page->addStretch();

    auto* recent = new QVBoxLayout(m_recentPart);
    recent->setContentsMargins({});
    auto* title = new QLabel(Text::tr("&Недавние"), m_recentPart);
    title->setBuddy(m_recent);
    m_recent->setObjectName(QStringLiteral("storeRecent"));
    m_recent->setAccessibleName(Text::tr("Недавние хранилища"));
    m_recent->setTextElideMode(Qt::ElideMiddle);
    auto* forget = new QAction(Text::tr("Убрать из списка"), m_recent);
    forget->setShortcut(QKeySequence::Delete);
    forget->setShortcutContext(Qt::WidgetShortcut);
    m_recent->addAction(forget);
    m_recent->setContextMenuPolicy(Qt::ActionsContextMenu);
    recent->addWidget(title);
    recent->addWidget(m_recent);
    connect(forget, &QAction::triggered, this, &StorePage::forgetRecent);
    connect(m_recent, &QListWidget::itemActivated, this, &StorePage::openRecent);

    m_waysColumn->setContentsMargins({});
    const QString place = QDir::toNativeSeparators(m_ownFile);
    if (QFileInfo::exists(m_ownFile)) {
        connect(addWay("storeOwn", Text::tr("Хранилище на этой машине"), place),
                &QAbstractButton::clicked, this, [this] {
                    take({m_ownFile, {}});
                });
    } else {
        connect(addWay("storeDemo", Text::tr("Попробовать на примере"),
                       Text::tr("Сделать хранилище на этой машине и наполнить его вымышленной "
                                "установкой: %1")
                           .arg(place)),
                &QAbstractButton::clicked, this, [this] { make(true); });
        connect(addWay("storeEmpty", Text::tr("Начать с пустого"),
                       Text::tr("Сделать хранилище на этой машине: %1").arg(place)),
                &QAbstractButton::clicked, this, [this] { make(false); });
    }
    connect(addWay("storeServer", Text::tr("Подключиться к серверу…"),
                   Text::tr("База PostgreSQL, в которой работают с нескольких машин")),
            &QAbstractButton::clicked, this, &StorePage::askForServer);
    connect(
        addWay("storeFile", Text::tr("Открыть файл…"), Text::tr("Хранилище SQLite в другом месте")),
        &QAbstractButton::clicked, this, &StorePage::openFile);

    auto* buttons = new QDialogButtonBox(this);
    m_open = buttons->addButton(Text::tr("&Открыть"), QDialogButtonBox::AcceptRole);
    m_open->setObjectName(QStringLiteral("storeOpen"));
    buttons->addButton(Text::tr("Отмена"), QDialogButtonBox::RejectRole);
    page->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &StorePage::openRecent);
    connect(buttons, &QDialogButtonBox::rejected, this, &StorePage::reject);
    connect(m_recent, &QListWidget::currentRowChanged, this,
            [this](int row) { m_open->setEnabled(row >= 0); });
    connect(&m_maker, &StoreMaker::made, this, &StorePage::made);
    fillRecent();
    fit();
}

/// As high as all texts are at the width of the page.
void StorePage::fit() {
    constexpr int usualWidth = 560;
    resize(usualWidth, layout()->totalHeightForWidth(usualWidth));
}

QCommandLinkButton* StorePage::addWay(const char* name, const QString& title, const QString& what) {
    auto* way = new QCommandLinkButton(title, what, m_ways); // owned by its parent
    // Its size hint is that of a button as narrow as its title: too high for one as wide as the
    // page.
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    policy.setHeightForWidth(true);
    way->setSizePolicy(policy);
    way->setObjectName(QLatin1String(name));
    way->setAccessibleDescription(what);
    m_waysColumn->addWidget(way);
    return way;
}

void StorePage::setReason(const QString& text) {
    m_reason->setText(text);
    m_reason->setVisible(!text.isEmpty());
    setAccessibleDescription(text);
    fit();
}

void StorePage::offerAgain(const QString& address) {
    store::StoreUrl url;
    const QString place = url.parse(address.toStdString()).ok()
                              ? QString::fromStdString(url.displayName())
                              : QString();
    auto* again = addWay("storeAgain", Text::tr("Попробовать ещё раз"), place);
    m_waysColumn->insertWidget(0, again);
    setTabOrder(m_recent, again);
    m_reason->setFocusPolicy(Qt::StrongFocus); // so that it can be copied by keys as well
    connect(again, &QAbstractButton::clicked, this, [this, address] { take({address, {}}); });
    again->setDefault(true);
    again->setFocus();
    fit();
}

void StorePage::fillRecent() {
    m_recent->clear();
    for (const QString& address : recentStores()) {
        const QString file = fileOf(address);
        const bool isMissing = !file.isEmpty() && !QFileInfo::exists(file);
        auto* item = new QListWidgetItem(isMissing ? address + Text::tr(" (файла нет)") : address,
                                         m_recent); // owned by the list
        item->setData(Qt::UserRole, address);
        item->setToolTip(address);
    }
    m_recentPart->setVisible(m_recent->count() > 0);
    m_recent->setCurrentRow(m_recent->count() > 0 ? 0 : -1);
    m_open->setVisible(m_recent->count() > 0);
    m_open->setEnabled(m_recent->currentRow() >= 0);
    m_open->setDefault(m_recent->count() > 0);
}

void StorePage::make(bool withDemonstration) {
    for (QWidget* part : {m_recentPart, m_ways})
        part->setEnabled(false);
    m_progress->setText(withDemonstration ? Text::tr("Хранилище делается и наполняется примером…")
                                          : Text::tr("Хранилище делается…"));
    m_progress->show();
    m_maker.make(m_ownFile, withDemonstration);
}

void StorePage::made(const QString& problem) {
    for (QWidget* part : {m_recentPart, m_ways})
        part->setEnabled(true);
    m_progress->hide();
    if (problem.isEmpty())
        take({m_ownFile, {}});
    else
        setReason(problem);
}

void StorePage::openFile() {
    auto* dialog =
        new QFileDialog(this, Text::tr("Файл хранилища"), QFileInfo(m_ownFile).absolutePath(),
                        Text::tr("Хранилища (*.db);;Все файлы (*)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& file) {
        take({QFileInfo(file).absoluteFilePath(), {}});
    });
    dialog->open();
}

void StorePage::askForServer() {
    auto* dialog = new ServerDialog(m_user, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        take({dialog->address(), dialog->password()});
    });
    dialog->open();
}

void StorePage::openRecent() {
    if (const QListWidgetItem* item = m_recent->currentItem())
        take({item->data(Qt::UserRole).toString(), {}});
}

void StorePage::forgetRecent() {
    if (const QListWidgetItem* item = m_recent->currentItem()) {
        const QString address = item->data(Qt::UserRole).toString();
        forgetStore(address);
        fillRecent();
        secrets::forget(address);
    }
}

void StorePage::take(const ChosenStore& store) {
    m_chosen = store;
    accept();
}

void StorePage::reject() {
    if (!m_maker.isRunning())
        QDialog::reject();
}

bool askForStore(const QString& ownFile, const QString& user, const QString& reason,
                 const QString& failed, ChosenStore* chosen) {
    StorePage page(ownFile, user);
    page.setReason(reason);
    if (!failed.isEmpty())
        page.offerAgain(failed);
    if (page.exec() != QDialog::Accepted)
        return false;
    *chosen = page.chosen();
    return true;
}

bool askToRetryDesktop(const QString& reason) {
    QMessageBox box(QMessageBox::Critical, Text::tr("Рабочий стол не открыт"), reason);
    box.setTextFormat(Qt::PlainText);
    const QAbstractButton* again =
        box.addButton(Text::tr("Попробовать ещё раз"), QMessageBox::AcceptRole);
    box.addButton(Text::tr("Закрыть"), QMessageBox::RejectRole);
    box.exec();
    return box.clickedButton() == again;
}

void openFurtherStore(const QString& ownFile, const QString& user, QWidget* window,
                      const QStringList& arguments, std::function<void(const QString& why)> fail) {
    auto* page = new StorePage(ownFile, user, window); // goes when it is closed
    page->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(page, &QDialog::accepted, window, [page, arguments, fail = std::move(fail)] {
        QProcess process;
        process.setProgram(QCoreApplication::applicationFilePath());
        process.setArguments(arguments +
                             QStringList{QStringLiteral("--store"), page->chosen().address});
        process.setProcessEnvironment(environmentOffering(page->chosen().password));
        if (!process.startDetached())
            fail(process.errorString());
    });
    page->open();
}

} // namespace orvo::app
