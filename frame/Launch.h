// Launch.h: how a module asks its host to open what an element of an operator's menu stands for,
// and what else goes over COrvoCliApp::moduleCall. Each call takes a pointer to its request, which
// stays the caller's; the host fills `refusal` before the call returns, with nothing if it has done
// what was asked. A host that does not know the call leaves it as it is.
#ifndef ORVO_FRAME_LAUNCH_H
#define ORVO_FRAME_LAUNCH_H

#include "frame/OrvoClient.h"
#include "frame/Text.h"

#include <QDateTime>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <cstdint>
#include <functional>

namespace orvo {

/// LaunchRequest*: opens it.
inline constexpr int callLaunch = 65;
/// LaunchRequest*: opens nothing; the refusal says why it could not be opened, as far as that can
/// be told beforehand.
inline constexpr int callCheckLaunch = 66;
/// HandbookRequest*: shows a page of the handbook.
inline constexpr int callHandbook = 67;

/// LogRequest*: reads the change log of the store.
inline constexpr int callLog = 68;

/// PreviewRequest*: shows the menu of a desktop beside the module that asks, as operators get it.
inline constexpr int callPreview = 69;
/// PreviewEdit*: what the module shows and edits now, for the preview that it has asked for.
inline constexpr int callPreviewEdit = 70;

/// UsesRequest*: tells where records are used, now and whenever that changes.
inline constexpr int callUses = 71;
/// ShowUsesRequest*: shows the places in which a record is used, with a way to go to each.
inline constexpr int callShowUses = 72;

struct LaunchRequest {
    QString key;          ///< of the element: what "one copy" goes by
    QString caption;      ///< for the title
    int32_t kind = 0;     ///< Kind::Module, Function, Form or File
    QString resource;     ///< key of the record that names it
    QString name;         ///< of the module, function, form or file
    QString path;         ///< of a file: captions of its folders joined by "/"
    QString params;       ///< as parseLaunchParameters takes them
    bool oneCopy = false; ///< bring one that is open to the front instead of opening another
    QString refusal = Text::tr("Приложение не умеет открывать элементы меню.");
};

/// The parameters of an element: "name=value" pairs and other words, ";" between them. Blanks
/// around names, values and words do not count. What stands in double quotes is taken as it is, ";"
/// and "=" included; "" there is a quote. A module is told of them by SetParamMod and
/// SetParamCommand; a function gets the text as it stands.
struct ORVOCLIENT_EXPORT LaunchParameters {
    QList<QPair<QString, QString>> pairs; ///< in their order
    QString command; ///< the words that are no pairs, as they were written, ";" between them

    /// The value of the last pair of that name; null if there is none.
    QString value(const QString& name) const;
};

/// A text of any form has a meaning: a quote without its end reaches to the end of the text.
ORVOCLIENT_EXPORT LaunchParameters parseLaunchParameters(const QString& text);

/// One change of a record.
struct LogEntry {
    qint64 id = 0;    ///< rises
    int32_t code = 0; ///< 601 inserted, 602 updated, 603 deleted
    QString table, key;
    QString login; ///< who; empty: by hand, past a database that knows no logins
    QDateTime time;
    QString values; ///< JSON object: the changed fields; all fields of an insert, none of a delete
};

struct LogRequest {
    qint64 after = -1;         ///< the changes behind that one; -1: the last ones
    int most = 1000;           ///< that many at most
    QVector<LogEntry> entries; ///< in their order
    qint64 last = -1;          ///< the one to go on behind next time
    QString refusal = Text::tr("Приложение не умеет читать журнал изменений.");
};

struct PreviewRequest {
    QString desktop; ///< key
    QString refusal = Text::tr("Приложение не умеет показывать рабочие столы.");
};

struct PreviewEdit {
    QString desktop;    ///< key of the desktop that is shown; empty: none
    QString key;        ///< of the element that is edited and not saved; empty: none is
    bool isNew = false; ///< no record of it exists yet
    QVariantMap values; ///< its values by the names of the fields
};

/// Where records are used: which elements of menus open a resource or bear a file as their icon.
struct UsesAnswer {
    bool isKnown = false; ///< false: the records are still being read; another answer follows
    int count = 0;        ///< of the places
    QString words; ///< "5 элементов меню на 2 рабочих столах", "нигде не используется"
    QStringList places; ///< the first ones, in words: "элемент меню «Насосы» (КС-1 / Схемы)"
    QString brief = {}; ///< "5 элементов", "не используется": where there is little room
    int desktops = 0; ///< on which they are
};

struct UsesRequest {
    QString table;
    QStringList keys;
    QObject* receiver = nullptr; ///< it is told as long as this lives; an object of the GUI thread
    /// Called from the event loop, never before the call has returned; after the first known answer
    /// only with others.
    std::function<void(const UsesAnswer& answer)> tell;
    QString refusal = Text::tr("Приложение не знает, где что используется.");
};

struct ShowUsesRequest {
    QString table, key;    ///< of an element of a menu: the resource that it opens
    bool takeFocus = true; ///< false: the module keeps the keyboard
    QString refusal = Text::tr("Приложение не знает, где что используется.");
};

struct HandbookRequest {
    QString page;    ///< "operator-guide", "user-guide", "administrator"; empty: the operator's
    QString chapter; ///< name of a heading; empty: the beginning
    QString refusal = Text::tr("Приложение не умеет показывать руководство.");
};

} // namespace orvo

#endif
