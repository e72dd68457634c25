// OrvoClient.h: the contract between a module and its host, the library libOrvoClient.
//
// Conventions:
//  1. Everything here lives on the GUI thread.
//  2. Texts that cross to the server are Windows-1251; QString parameters are plain QStrings.
//  3. No operation throws. Server calls block until the answer is there.
//  4. Notifications reach a module only through MessageOn, which the host calls from its bare event
//     loop: never inside a slot, a modal dialog, a pop-up menu or a drag.
//
// The life of a module: 1 CppCliModule makes it (no server yet); 2 the host fills m_moduleName and
// registers it; 3 ModuleStart, once; 4 MessageOn whenever notifications wait, only if 3 gave true;
// 5 closeEvent, ModuleStop, destructor.
#ifndef ORVO_FRAME_ORVOCLIENT_H
#define ORVO_FRAME_ORVOCLIENT_H

#include "frame/OrvoMdx.h"
#include "frame/UserCaption.h"

#include <QBitArray>
#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QMainWindow>
#include <QObject>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>
#include <QWidget>

#include <memory>
#include <string>
#include <vector>

#ifdef ORVOCLIENT_LIBRARY
#define ORVOCLIENT_EXPORT __attribute__((visibility("default")))
#else
#define ORVOCLIENT_EXPORT
#endif

class QAbstractButton;
class QMenu;
class COrvoCliMod;
class COrvoCliSes;
class CPopMessageBox;

/// Another engineer's open edit, as the host shows it at the row of the record.
struct RecordMark {
    QString label; ///< who; empty: no mark
    QString tip;   ///< who, where and since when, as plain text
};

/// What the host gives a module factory. The host derives from it.
class ORVOCLIENT_EXPORT COrvoCliApp {
public:
    COrvoCliApp();
    virtual ~COrvoCliApp();
    COrvoCliApp(const COrvoCliApp&) = delete;
    COrvoCliApp& operator=(const COrvoCliApp&) = delete;

    COrvoCliSes* m_session = nullptr;   ///< not owned; never null while a module lives
    COrvoCliMod* m_logModule = nullptr; ///< not owned; takes LogFile
    QString m_workDir;                  ///< client's base directory, separator at its end
    bool m_mayWrite = true;             ///< whether this user may change anything in the store

    /// A log line: level, place, text. Called by COrvoCliMod::LogFile.
    virtual void log(int level, const QString& place, const QString& text);
    /// A module set its title.
    virtual void moduleTitle(COrvoCliMod* module, const QString& title, const QString& second);
    /// A module asks for something (COrvoCliMod::doCall).
    virtual void moduleCall(COrvoCliMod* module, int code, void* data);
    /// Whether any record has a mark; false: recordMark need not be asked.
    virtual bool hasRecordMarks() const;
    /// The mark of a record. Cheap: it is asked with every row that is painted.
    virtual RecordMark recordMark(const QString& table, const QString& key) const;
    /// Adds to the end of the context menu of a record's row what the host offers for the record.
    /// Nothing for a row behind which no record stands.
    virtual void addRecordActions(QMenu* menu, const QString& table, const QString& key);
};

/// Base class of a module: a main window that the host places.
class ORVOCLIENT_EXPORT COrvoCliMod : public QMainWindow {
    Q_OBJECT
public:
    struct Paths {
        QString workDir; ///< client's base directory, with the separator at its end
    };

    explicit COrvoCliMod(COrvoCliApp* app);
    ~COrvoCliMod() override;

    COrvoCliApp* m_app;                        ///< not owned
    Paths* m_paths;                            ///< owned by the base class, never null
    CPopMessageBox* m_popMessageBox = nullptr; ///< child of the module, made when first needed
    QString m_moduleName;                      ///< the name that it was made by; the host fills it

    // The order of the virtual operations is part of the contract.
    virtual void LogFile(int level, QString place, QString text);
    virtual bool ModuleStart();
    virtual void ModuleStop();
    virtual void MessageOn();
    /// One notification; the block stays the host's. True: handled or ignored.
    virtual bool MessageData(MDXCliParam* prm);
    virtual void SetError(QString text);
    virtual void SetParamMod(QString name, QString value);
    virtual QString GetParamMod(QString name, QString& value);
    virtual void SetParamCommand(QString command);
    virtual void SetParamProfile(QString profile);
    virtual QString GetParamProfile();
    virtual void SetParamState(QString state);
    virtual QString GetParamState();
    virtual void ParentResizeOn(int width, int height);
    virtual QStringList GetAlarmsList();
    virtual void AppIdleEvent();
    /// The session has reconnected; notifications go on from where they stopped.
    virtual void ModSesReconnect();
    virtual void ModDataEditPost();
    virtual void ModDataEditCancel();

public slots:
    virtual void slot_modNotify(QString name, QVariant value);
    virtual void slot_toolFinished();
    virtual void slot_popMessageBoxClicked(QAbstractButton* button);
    virtual void slot_endRestructure();

public:
    // The open edit: what the user has typed or made and neither saved nor dropped. While there is
    // one the host holds the changes of others back and does not close the module without asking.
    // The defaults are those of a module that has none. Called from the bare event loop only.
    /// What is being edited, in words for a list ("элемент «Архив»"); empty: no edit is open.
    virtual QString ModEditText() const;
    /// Saves it as the module's own command does. False if it is still open, because the module
    /// refuses what was typed and has said why. Whether the store took it, the session tells.
    virtual bool ModEditSave();
    /// Drops it as the module's own command does.
    virtual void ModEditCancel();
    /// Table and key of the record that is being edited; no key for one that is new, and nothing if
    /// no edit is open.
    virtual QPair<QString, QString> ModEditRecord() const;
    /// Makes the record's row the current one; `desktop`: of an element of a menu, the key of its
    /// desktop. False if this module does not show the record. Called while no edit is open.
    virtual bool ModShowRecord(const QString& table, const QString& key, const QString& desktop);
    /// Whether one of its trees has a row of that record, seen or not.
    virtual bool ModHasRow(const QString& table, const QString& key) const;

    void SetModTitle(QString title, QString second);
    /// Takes the notifications that wait for this module and calls MessageData once for each, in
    /// order of arrival; returns when none is left.
    void MessageGet();
    void doCall(int code, void* data);
    /// Makes m_popMessageBox, with the module as parent, if it is null.
    void PopMessageBoxCreate();

    /// Whether what is being done may make another row the current one. Not while MessageData takes
    /// a change that another login wrote and the user wants to stay where he is.
    bool mayMoveCurrent() const;

    /// For a module that shows one desktop and nothing else, once it has read it: of what concerns
    /// other desktops only, or resources that are neither named by this one nor icons, it need not
    /// be told. Empty, as at first: it is told of everything. To be emptied before it reads
    /// anything else.
    void setOnlyDesktop(const QString& key);
    QString onlyDesktop() const;

    // For the host.
    /// Puts a notification into the module's queue, which owns it from then on.
    void messagePut(MDXCliParam* prm);
    int messagesWaiting() const;
    /// Whether the changes of others move the current row, as they do at first.
    void setFollowsOthers(bool on);
    /// The change of the log up to which the module has been told; -1: unknown. What it reads by
    /// itself may be newer.
    int64_t messagesSeen() const;
    void setMessagesSeen(int64_t change);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// The session to the server.
class ORVOCLIENT_EXPORT COrvoCliSes {
public:
    struct Private;
    explicit COrvoCliSes(std::unique_ptr<Private> p);
    ~COrvoCliSes();
    COrvoCliSes(const COrvoCliSes&) = delete;
    COrvoCliSes& operator=(const COrvoCliSes&) = delete;

    /// Sends "TableRecords", "TableStructure" (data: the table name's bytes) or "UserProp" (no
    /// data). Non-zero if sent; `*prm` then holds the block of the request, the caller's to free.
    int PacketExec(const char* name, const void* data, int length, MDXCliParam** prm);
    /// Non-zero when the reply is there; `*prm` then holds it. Field 0: result code. Field 2:
    /// packed table, or on failure the server's text (UTF-8) or NULL. `timeout` -1: no limit.
    int WaitResult(MDXCliParam** prm, int timeout);
    void PrmFree(MDXCliParam* prm);
    /// Only "select * from Menu where FolderKey = '...'" (Windows-1251, a quote inside the literal
    /// doubled or not: everything between the first and the last quote is the key). The result is
    /// the caller's; null for any other statement and on failure.
    MDArray* SqlRequest(const char* sql);
    /// Applies every posted record of the array by its flag, in order of entry, in one transaction:
    /// all or none. `prm`, if given, receives a reply block with the result code in field 0, the
    /// caller's to free. Non-zero on success. A failure is reported to the host, which shows it.
    int SqlUpdate(const char* table, MDArray* records, bool always, MDXCliParam** prm);
    /// Server time (seconds since 1970-01-01 UTC) in the session's time: local time.
    QDateTime MdxTimeToSesTime(double time) const;

    Private* data() const { return d.get(); } ///< for the host library

private:
    std::unique_ptr<Private> d;
};

/// A new unique identifier: 32 hexadecimal digits.
ORVOCLIENT_EXPORT QByteArray GenGuid32();
/// Server time of a date.
ORVOCLIENT_EXPORT double DateTime_To_MdxTime(const QDateTime& time);

// ---------------------------------------------------------------------------------------------
// Tools: one job each on the server's stores. Made on the caller's stack; the caller fills the
// public members, calls Perform(false) and reads `result` (key 0 in the order of the reply; empty
// after a failure, which the host shows). Rows of stored files: 0 name (text), 1 time (date, may be
// NULL), 2 size (integer), 3 bytes (block; NULL without data).

class ORVOCLIENT_EXPORT COrvoToolObject : public QObject {
    Q_OBJECT
public:
    explicit COrvoToolObject(COrvoCliMod* module);
    ~COrvoToolObject() override;
    /// Runs the job and returns when it is finished. `background` is false.
    void Perform(bool background);

protected:
    virtual void run(COrvoCliSes& session) = 0;
    COrvoCliMod* m_module;
};

/// Records of a table whose key number `keyNumber` begins with the given values. Table "Menu", key
/// 2 is `MenuResourceKey`.
class ORVOCLIENT_EXPORT CToolRecByKey : public COrvoToolObject {
    Q_OBJECT
public:
    explicit CToolRecByKey(COrvoCliMod* module);
    ~CToolRecByKey() override;
    std::string tableName;
    int32_t keyNumber = 0;
    QVector<MDRVar> keyValues;
    QBitArray keyBits = QBitArray(6); ///< bit i: value i is given
    CMDArray result;

protected:
    void run(COrvoCliSes& session) override;
};

/// The records of a table with these keys, those that are there: one question to the server for all
/// of them.
class ORVOCLIENT_EXPORT CToolRecByKeys : public COrvoToolObject {
    Q_OBJECT
public:
    explicit CToolRecByKeys(COrvoCliMod* module);
    ~CToolRecByKeys() override;
    std::string tableName;
    QStringList keys; ///< of key 0, in any case
    CMDArray result;

protected:
    void run(COrvoCliSes& session) override;
};

class ORVOCLIENT_EXPORT CToolFormGet : public COrvoToolObject {
    Q_OBJECT
public:
    explicit CToolFormGet(COrvoCliMod* module);
    ~CToolFormGet() override;
    QString formName;
    bool withData = false;
    CMDArray result;

protected:
    void run(COrvoCliSes& session) override;
};

class ORVOCLIENT_EXPORT CToolFileList : public COrvoToolObject {
    Q_OBJECT
public:
    explicit CToolFileList(COrvoCliMod* module);
    ~CToolFileList() override;
    QString path; ///< folder captions joined by "/"; empty: the root of the file area
    QString name;
    bool reserved = false;
    CMDArray result;

protected:
    void run(COrvoCliSes& session) override;
};

class ORVOCLIENT_EXPORT CToolFileGet : public COrvoToolObject {
    Q_OBJECT
public:
    explicit CToolFileGet(COrvoCliMod* module);
    ~CToolFileGet() override;
    QString path;
    QString name;
    CMDArray result;

protected:
    void run(COrvoCliSes& session) override;
};

class ORVOCLIENT_EXPORT CToolFormPut : public COrvoToolObject {
    Q_OBJECT
public:
    explicit CToolFormPut(COrvoCliMod* module);
    ~CToolFormPut() override;
    QString formPath; ///< folder captions below "формы отображения", joined by "/"; may be empty
    /// `data` must live until Perform has returned.
    void AddFile(const QString& name, const void* data, qint64 size, double time);

protected:
    void run(COrvoCliSes& session) override;

private:
    struct Item;
    std::vector<Item> m_items;
};

class ORVOCLIENT_EXPORT CToolFilePut : public COrvoToolObject {
    Q_OBJECT
public:
    explicit CToolFilePut(COrvoCliMod* module);
    ~CToolFilePut() override;
    void AddFile(const QString& path, const QString& name, const void* data, qint64 size,
                 double time);

protected:
    void run(COrvoCliSes& session) override;

private:
    struct Item;
    std::vector<Item> m_items;
};

class ORVOCLIENT_EXPORT CToolFormDel : public COrvoToolObject {
    Q_OBJECT
public:
    explicit CToolFormDel(COrvoCliMod* module);
    ~CToolFormDel() override;
    QStringList names;

protected:
    void run(COrvoCliSes& session) override;
};

class ORVOCLIENT_EXPORT CToolFileDel : public COrvoToolObject {
    Q_OBJECT
public:
    explicit CToolFileDel(COrvoCliMod* module);
    ~CToolFileDel() override;
    QList<QPair<QString, QString>> files; ///< folder path, name

protected:
    void run(COrvoCliSes& session) override;
};

// ---------------------------------------------------------------------------------------------
// Pop-ups: painted inside the module's window; none runs an event loop of its own.

enum TMessageBoxIcon {
    MessageBoxIconNone = 0,
    MessageBoxIconError = 1,
    MessageBoxIconQuestion = 4
};
enum TMessageBoxType { MessageBoxTypeOk = 0, MessageBoxTypeYesNo = 5 };
enum TProgressBarColor { ProgressBarColorDefault = 0, ProgressBarColorGreen = 6 };

/// While the box stands, what it covers gets neither mouse nor keys, shortcuts of its actions
/// included; the rest of the window stays usable.
class ORVOCLIENT_EXPORT CPopMessageBox : public QWidget {
    Q_OBJECT
public:
    explicit CPopMessageBox(QWidget* parent);
    ~CPopMessageBox() override;
    /// Fills the box. `slot` is a slot of the parent as SLOT() spells it (leading digit 1); it
    /// receives the clicked button as QAbstractButton*. show() returns at once.
    void setMessage(QString title, QString text, TMessageBoxIcon icon, TMessageBoxType type,
                    const char* slot);
    /// What the text is about, below it; gone with the next setMessage. Also while the box stands.
    void setDetails(const QString& details);
    /// Role of a button of this box in the numbering of QMessageBox::ButtonRole; -1 for others.
    int ButtonRole(QAbstractButton* button) const;
    /// Whether the box was filled with a question, which has Yes and No.
    bool isQuestion() const;
    /// Names the records that the question is about, from one table, and those of that table which
    /// lie below them: after setMessage, which forgets those of the last question. What others do
    /// to them while the box stands is then told in it; if all of them are deleted, or something is
    /// put into one, which the answer could not have meant, the question is withdrawn and becomes a
    /// notice that says so.
    void setSubject(const QString& table, const QStringList& keys, const QStringList& below = {});

    // For the host.
    /// Whether a question about something stands.
    bool isAbout() const;
    QString subjectTable() const;
    QStringList subjectKeys() const;
    QStringList subjectBelow() const;
    /// Adds a line below the text.
    void addNote(const QString& line);
    /// Makes the question a notice: its text, that line, one button that hides the box.
    void withdraw(const QString& line);

signals:
    void clicked(QAbstractButton* button);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void connectSlot(const char* slot);

    struct Private;
    std::unique_ptr<Private> d;
};

class ORVOCLIENT_EXPORT CPopProgressBar : public QWidget {
    Q_OBJECT
public:
    explicit CPopProgressBar(QWidget* parent);
    ~CPopProgressBar() override;
    void setText(QString text, QString second);
    void setRange(int from, int to);
    void setColor(TProgressBarColor color);
    /// Shows the value at once: the bar repaints without the event loop.
    void setValue(int value);

protected:
    void showEvent(QShowEvent* event) override;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// Base of pop-up windows.
class ORVOCLIENT_EXPORT CPopTemplate : public QWidget {
    Q_OBJECT
public:
    CPopTemplate(QWidget* parent, int32_t reserved);
    ~CPopTemplate() override;
    /// Centres the pop-up over its parent.
    void moveToCenter();
    bool m_popup = false; ///< set by the picker's callers: stays above the parent's window

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
};

#endif
