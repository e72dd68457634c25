// The application object's defaults and the base class of modules.
#include "frame/OrvoClient.h"

#include "platform/client/Session.h"
#include "platform/client/WidgetRoles.h"
#include "platform/mdx/MdxBuild.h"

#include <QCloseEvent>
#include <QHash>
#include <QPointer>

#include <algorithm>
#include <cstdlib>
#include <deque>

namespace {

struct BlockFree {
    void operator()(MDXCliParam* block) const { orvo::mdx::paramFree(block); }
};
using Block = std::unique_ptr<MDXCliParam, BlockFree>;

/// Whether another login than that of the session wrote the change.
bool isForeign(const MDXCliParam* block, const COrvoCliApp* app) {
    constexpr int loginField = 3;
    const char* login = nullptr;
    if (!app || !app->m_session ||
        MDRGetTextPtr(MDRFldByNum(block->array, loginField), block->record, &login) != MDX_OK)
        return true;
    const std::string& own = orvo::client::sessionStore(*app->m_session).login();
    return orvo::mdx::toUtf8(login ? login : "") != own;
}

/// The change that a notification tells of; 0 if it is none of the log's.
int64_t changeOf(const MDXCliParam& block) {
    const char* id = nullptr;
    const MDRField field = MDRFldByNum(block.array, 0);
    return orvo::mdx::fieldType(field) == MDX_TEXT &&
                   MDRGetTextPtr(field, block.record, &id) == MDX_OK && id
               ? std::strtoll(id, nullptr, 10)
               : 0;
}

} // namespace

COrvoCliApp::COrvoCliApp() = default;
COrvoCliApp::~COrvoCliApp() = default;

void COrvoCliApp::log(int level, const QString& place, const QString& text) {
    qWarning("[%d] %s: %s", level, qUtf8Printable(place), qUtf8Printable(text));
}

void COrvoCliApp::moduleTitle(COrvoCliMod*, const QString&, const QString&) {}

void COrvoCliApp::moduleCall(COrvoCliMod*, int, void*) {}

bool COrvoCliApp::hasRecordMarks() const {
    return false;
}

RecordMark COrvoCliApp::recordMark(const QString&, const QString&) const {
    return {};
}

void COrvoCliApp::addRecordActions(QMenu*, const QString&, const QString&) {}

struct COrvoCliMod::Private {
    std::deque<Block> queue;
    QHash<QString, QString> params;
    QString profile;
    QString state;
    QString onlyDesktop;
    bool followsOthers = true;
    bool takesForeign = false; ///< MessageData has a change of another login
    int64_t seen = -1;
};

COrvoCliMod::COrvoCliMod(COrvoCliApp* app)
    : m_app(app)
    , m_paths(new Paths)
    , d(std::make_unique<Private>()) {
    orvo::client::tellWidgetRoles();
    if (app)
        m_paths->workDir = app->m_workDir;
    // A main window is a window of its own until the host places it.
    setWindowFlags(Qt::Widget);
}

COrvoCliMod::~COrvoCliMod() {
    delete m_paths;
}

void COrvoCliMod::LogFile(int level, QString place, QString text) {
    if (m_app)
        m_app->log(level, place, text);
}

bool COrvoCliMod::ModuleStart() {
    return true;
}

void COrvoCliMod::ModuleStop() {}

void COrvoCliMod::MessageOn() {
    MessageGet();
}

bool COrvoCliMod::MessageData(MDXCliParam*) {
    return true;
}

void COrvoCliMod::SetError(QString text) {
    LogFile(5, m_moduleName, text);
}

void COrvoCliMod::SetParamMod(QString name, QString value) {
    d->params.insert(name, value);
}

void COrvoCliMod::setOnlyDesktop(const QString& key) {
    d->onlyDesktop = key;
}

QString COrvoCliMod::onlyDesktop() const {
    return d->onlyDesktop;
}

QString COrvoCliMod::GetParamMod(QString name, QString& value) {
    value = d->params.value(name);
    return value;
}

void COrvoCliMod::SetParamCommand(QString) {}

void COrvoCliMod::SetParamProfile(QString profile) {
    d->profile = profile;
}

QString COrvoCliMod::GetParamProfile() {
    return d->profile;
}

void COrvoCliMod::SetParamState(QString state) {
    d->state = state;
}

QString COrvoCliMod::GetParamState() {
    return d->state;
}

void COrvoCliMod::ParentResizeOn(int, int) {} // the tab's layout gives a module its size

QStringList COrvoCliMod::GetAlarmsList() {
    return {};
}

void COrvoCliMod::AppIdleEvent() {}
void COrvoCliMod::ModSesReconnect() {}
void COrvoCliMod::ModDataEditPost() {}
void COrvoCliMod::ModDataEditCancel() {}
void COrvoCliMod::slot_modNotify(QString, QVariant) {}
void COrvoCliMod::slot_toolFinished() {}

void COrvoCliMod::slot_popMessageBoxClicked(QAbstractButton*) {
    if (m_popMessageBox)
        m_popMessageBox->hide();
}

void COrvoCliMod::slot_endRestructure() {}

QString COrvoCliMod::ModEditText() const {
    return {};
}

bool COrvoCliMod::ModEditSave() {
    return true;
}

void COrvoCliMod::ModEditCancel() {}

QPair<QString, QString> COrvoCliMod::ModEditRecord() const {
    return {};
}

bool COrvoCliMod::ModShowRecord(const QString&, const QString&, const QString&) {
    return false;
}

bool COrvoCliMod::ModHasRow(const QString&, const QString&) const {
    return false;
}

void COrvoCliMod::SetModTitle(QString title, QString second) {
    setWindowTitle(second.isEmpty() ? title : QStringLiteral("%1 — %2").arg(title, second));
    if (m_app)
        m_app->moduleTitle(this, title, second);
}

void COrvoCliMod::MessageGet() {
    // A handler may close the module: nothing of it is touched after that.
    const QPointer<COrvoCliMod> self(this);
    while (self && !d->queue.empty()) {
        const Block block = std::move(d->queue.front());
        d->queue.pop_front();
        d->takesForeign = !d->followsOthers && isForeign(block.get(), m_app);
        MessageData(block.get());
        if (self)
            d->takesForeign = false;
        if (self && d->seen >= 0)
            d->seen = std::max(d->seen, changeOf(*block));
    }
}

bool COrvoCliMod::mayMoveCurrent() const {
    return !d->takesForeign;
}

void COrvoCliMod::setFollowsOthers(bool on) {
    d->followsOthers = on;
}

void COrvoCliMod::doCall(int code, void* what) {
    if (m_app)
        m_app->moduleCall(this, code, what);
}

void COrvoCliMod::PopMessageBoxCreate() {
    if (!m_popMessageBox)
        m_popMessageBox = new CPopMessageBox(this); // owned by its parent
}

void COrvoCliMod::messagePut(MDXCliParam* prm) {
    if (prm)
        d->queue.emplace_back(prm);
}

int64_t COrvoCliMod::messagesSeen() const {
    return d->seen;
}

void COrvoCliMod::setMessagesSeen(int64_t change) {
    d->seen = change;
}

int COrvoCliMod::messagesWaiting() const {
    return static_cast<int>(d->queue.size());
}

void COrvoCliMod::closeEvent(QCloseEvent* event) {
    event->accept();
}
