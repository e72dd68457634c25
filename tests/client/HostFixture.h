// HostFixture.h: a real store (of the kind that ORVO_STORE_KIND names, a file by default), a
// session on it, and a module that remembers what it was told.
#ifndef ORVO_TESTS_CLIENT_HOSTFIXTURE_H
#define ORVO_TESTS_CLIENT_HOSTFIXTURE_H

#include "frame/OrvoClient.h"
#include "platform/client/Session.h"
#include "platform/store/Store.h"
#include "tests/store/StoreKinds.h"

#include <QStringList>
#include <QTemporaryDir>

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace orvo::test {

/// A value of a record: text in UTF-8, or anything an MDRVar holds.
using Fields = std::vector<std::pair<std::string, std::string>>;

class App : public COrvoCliApp {
public:
    struct Call {
        int code;
        void* data;
    };
    QStringList logs;
    QStringList titles;
    std::vector<Call> calls;
    void log(int level, const QString& place, const QString& text) override;
    void moduleTitle(COrvoCliMod* module, const QString& title, const QString& second) override;
    void moduleCall(COrvoCliMod* module, int code, void* data) override;
};

/// One notification as a module reads it.
struct Message {
    int code = 0;
    QString table;
    QString key;
    QString source;
    int fieldCount = 0;
    uint32_t rawLength = 0;
    std::map<QString, QVariant> marked; ///< by field name; invalid: NULL
};

class Module : public COrvoCliMod {
    Q_OBJECT
public:
    explicit Module(COrvoCliApp* app) : COrvoCliMod(app) {}
    bool startResult = true;
    std::vector<Message> messages;
    QStringList life; ///< "start", "close", "stop"
    int reconnects = 0;
    std::function<void(const Message&)> onMessage;

    bool ModuleStart() override;
    void ModuleStop() override;
    bool MessageData(MDXCliParam* prm) override;
    void ModSesReconnect() override { ++reconnects; }
    QStringList keys() const;

public slots:
    void boxClicked(QAbstractButton* button);

public:
    std::vector<int> roles; ///< of the buttons clicked

protected:
    void closeEvent(QCloseEvent* event) override;
};

class Host {
public:
    explicit Host(const std::string& login = "engineer");
    ~Host();

    QTemporaryDir dir;
    std::unique_ptr<store::test::StoreKind> kind;
    const std::string url; ///< of the store
    App app;
    std::unique_ptr<COrvoCliSes> session;
    QStringList failures; ///< "operation|code|text" of each failure reported

    store::Store& store() { return client::sessionStore(*session); }
    /// Another connection to the same store.
    std::unique_ptr<store::Store> connectAgain(const std::string& login = "other") const;
    /// Writes one record through the session with that flag.
    int write(const char* table, uint32_t flag, const Fields& fields);
    /// Runs SQL with the database's own shell, as an administrator would by hand.
    bool byHand(const QString& sql) const;
    /// The login in the log of what was written so.
    QString handLogin() const { return QString::fromUtf8(kind->handLogin()); }
};

/// The text of a field, decoded; a null QString for NULL.
QString textOf(const MDArray* array, const MDRData* record, const char* field);
/// Adds a record with that flag to an array of changes; integers and booleans are read from text.
void addRecord(CMDArray& array, uint32_t flag, const Fields& fields);
/// A text value; `bytes` must outlive it.
MDRVar textValue(const std::string& bytes);

} // namespace orvo::test

#endif
