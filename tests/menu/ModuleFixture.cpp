#include "tests/menu/ModuleFixture.h"

#include "platform/client/Blocks.h"
#include "platform/client/Session.h"
#include "platform/mdx/MdxBuild.h"

#include <QChildEvent>
#include <QDir>
#include <QItemSelectionModel>

namespace orvo::test {

void setFields(CMDArray& table, MDRData* record, Fields fields) {
    for (const auto& [name, value] : fields) {
        if (!MDRFldByName(table.array, name))
            qFatal("no field %s", name);
        MDRVar var{};
        const std::string text = mdx::toCp1251(value.toString().toStdString());
        switch (value.userType()) {
        case QMetaType::Bool:
            var.type = MDX_BOOLEAN;
            var.value.boolean = value.toBool();
            break;
        case QMetaType::Int:
            var.type = MDX_INTEGER;
            var.value.integer = value.toInt();
            break;
        default:
            if (value.toString().isNull()) {
                var.null = 1;
            } else {
                var.type = MDX_TEXT;
                var.value.text.length = static_cast<uint32_t>(text.size());
                var.value.text.pointer = text.c_str();
            }
        }
        table.SetValF(record, name, var);
    }
}

// ---------------------------------------------------------------------------------------------
// TestStore

namespace {

std::unique_ptr<store::test::StoreKind> renewedKind() {
    auto kind = store::test::storeKind();
    if (!kind->renew())
        qFatal("no store");
    return kind;
}

} // namespace

TestStore::TestStore() : TestStore(renewedKind()) {}

TestStore::TestStore(std::unique_ptr<store::test::StoreKind> kind)
    : m_kind(std::move(kind))
    , m_store(connect()) {}

TestStore::~TestStore() = default;

std::string TestStore::url() const {
    // A test that runs on several kinds of store names the one it has made, still empty.
    const QByteArray given = qgetenv("ORVO_TEST_STORE");
    if (!given.isEmpty())
        return given.toStdString();
    return m_kind->url();
}

QString TestStore::handLogin() const {
    return QString::fromUtf8(m_kind->handLogin());
}

std::unique_ptr<store::Store> TestStore::connect(const char* login) const {
    store::OpenOptions options;
    options.login = login;
    store::Status status;
    auto opened = store::open(url(), options, &status);
    if (!opened)
        qFatal("no connection: %s", status.text.c_str());
    return opened;
}

store::Status TestStore::tryWrite(const char* table, MdxRecordFlag flag, Fields fields) {
    const store::TableDef* definition = store::findTable(table);
    if (!definition)
        qFatal("no table %s", table);
    CMDArray records;
    store::makeStructure(*definition, records.array);
    records.KeyAdd("KeyLink", MDX_KEY_UNIQUE);
    MDRData* record = MDARecNew(records.array);
    MDRSetFlags(record, flag);
    setFields(records, record, fields);
    records.RecPost(record);
    return m_store->update(table, records.array);
}

void TestStore::moveBelow(const char* table, const char* link, const QString& key,
                          const QString& parent) {
    const store::Status status = tryWrite(table, MDX_UPDATE, {{"KeyLink", key}, {link, parent}});
    if (!status.ok())
        sql(qPrintable(QStringLiteral("UPDATE \"%1\" SET \"%2\" = '%3' WHERE \"KeyLink\" = '%4'")
                           .arg(table, link, parent, key)));
}

void TestStore::write(const char* table, MdxRecordFlag flag, Fields fields) {
    const store::Status status = tryWrite(table, flag, fields);
    if (!status.ok())
        qFatal("%s not written: %s", table, status.text.c_str());
}

void TestStore::insert(const char* table, Fields fields) {
    write(table, MDX_INSERT, fields);
}

void TestStore::update(const char* table, Fields fields) {
    write(table, MDX_UPDATE, fields);
}

void TestStore::remove(const char* table, const char* key) {
    write(table, MDX_DELETE, {{"KeyLink", QString::fromUtf8(key)}});
}

void TestStore::sql(const char* statement) {
    QByteArray words;
    if (!m_kind->byHand(QByteArray(statement) + ';', &words))
        qFatal("%s: %s", statement, words.constData());
}

// ---------------------------------------------------------------------------------------------
// TestHost

struct TestHost::Private {
    std::unique_ptr<COrvoCliSes> session;
    std::unique_ptr<COrvoCliMod> logModule;
    std::unique_ptr<store::Store> reader; ///< reads the change log as a client of its own
    client::NotificationMaker maker;
    int64_t cursor = 0;
};

TestHost::TestHost(TestStore& store) : d(std::make_unique<Private>()) {
    m_workDir = store.directory() + QStringLiteral("/workdir/");
    QDir().mkpath(m_workDir + QStringLiteral("files/icons"));
    store::Status status;
    auto watch = std::make_unique<WriteWatch>(store.connect("engineer"));
    m_writes = watch.get();
    d->session = client::makeSession(std::move(watch), &status);
    if (!d->session)
        qFatal("no session: %s", status.text.c_str());
    m_session = d->session.get();
    QObject::connect(&client::sessionEvents(*d->session), &client::SessionEvents::failed,
                     [this](const client::Failure& failure) {
                         failures.append(failure.operation + ": " + failure.text);
                     });
    d->cursor = client::sessionCursor(*d->session).id;
    d->reader = store.connect("reader");
    d->logModule = std::make_unique<COrvoCliMod>(this);
    m_logModule = d->logModule.get();
}

TestHost::~TestHost() = default;

store::Store& TestHost::ownStore() {
    return client::sessionStore(*m_session);
}

void TestHost::deliver(COrvoCliMod& module) {
    std::vector<store::Change> changes;
    const store::Status status = d->reader->readLog(d->cursor, 1 << 20, &changes);
    if (!status.ok())
        qFatal("no change log: %s", status.text.c_str());
    for (const store::Change& change : changes) {
        d->cursor = change.id;
        module.messagePut(d->maker.make(change));
    }
    module.MessageOn();
}

void TestHost::log(int level, const QString& place, const QString& text) {
    logLines.append({level, place, text});
}

void TestHost::moduleTitle(COrvoCliMod*, const QString& title, const QString& second) {
    titles << title << second;
}

// ---------------------------------------------------------------------------------------------
// ViewWatch

ViewWatch::ViewWatch(QWidget& window) {
    for (QAbstractItemView* view : window.findChildren<QAbstractItemView*>())
        view->installEventFilter(this);
}

bool ViewWatch::eventFilter(QObject* object, QEvent* event) {
    // A view that is given a model makes a selection model at once, its child.
    auto* view = qobject_cast<QAbstractItemView*>(object);
    if (view && event->type() == QEvent::ChildAdded && view->model()) {
        QAbstractItemModel* model = view->model();
        std::unique_ptr<ModelWatch>& watch = m_watches[model];
        if (!watch) {
            if (model->rowCount() != 0)
                qFatal("a model was filled before it was watched");
            watch = std::make_unique<ModelWatch>(model);
        }
    }
    return QObject::eventFilter(object, event);
}

// ---------------------------------------------------------------------------------------------
// Trees

QModelIndex findRow(const QAbstractItemModel& model, const QString& text, int column) {
    const QModelIndex start = model.index(0, 0);
    if (!start.isValid())
        return {};
    const QModelIndexList hits = model.match(model.index(0, column), Qt::DisplayRole, text, 1,
                                             Qt::MatchExactly | Qt::MatchRecursive);
    return hits.isEmpty() ? QModelIndex() : hits.first().sibling(hits.first().row(), 0);
}

void clickRow(QTreeView* view, const QModelIndex& row, Qt::KeyboardModifiers modifiers) {
    if (!row.isValid())
        qFatal("no such row to click");
    view->scrollTo(row);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, modifiers, view->visualRect(row).center());
}

} // namespace orvo::test
