#include "platform/client/QuestionNotes.h"

#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "platform/store/Merge.h"
#include "platform/store/Schema.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace orvo::client {

namespace {

QJsonObject objectOf(const std::string& json) {
    return QJsonDocument::fromJson(QByteArray::fromStdString(json)).object();
}

QString captionIn(const QJsonObject& values) {
    const QString caption = values[QLatin1String(field::caption)].toString();
    return caption.isEmpty() ? values[QLatin1String(field::name_)].toString() : caption;
}

/// The link fields of that table by which a record is in one of the subject's table.
QStringList linksBetween(const QString& table, const QString& subject) {
    QStringList fields;
    const store::TableDef* definition = store::findTable(table.toStdString());
    if (definition == nullptr)
        return fields;
    for (const store::ParentField& parent : store::parentFields(*definition))
        if (subject == QLatin1String(parent.table))
            fields << QLatin1String(parent.field);
    return fields;
}

bool isIn(const QJsonObject& values, const QStringList& links, const QStringList& keys) {
    for (const QString& link : links)
        if (keys.contains(values[link].toString(), Qt::CaseInsensitive))
            return true;
    return false;
}

/// "petrov, 14:03:22"
QString whoAndWhen(const store::Change& change) {
    const QString time = QDateTime::fromMSecsSinceEpoch(std::llround(change.time * 1000))
                             .toString(QStringLiteral("HH:mm:ss"));
    return QStringLiteral("%1, %2").arg(change.login.empty() ? Text::tr("мимо клиента")
                                                             : QString::fromStdString(change.login),
                                        time);
}

QString named(const QString& name) {
    return name.isEmpty() ? QString() : Text::tr(" «%1»").arg(name);
}

} // namespace

void noteInQuestion(COrvoCliMod& module, const store::Change& change) {
    CPopMessageBox* box = module.m_popMessageBox;
    if (!box || !box->isAbout())
        return;
    const QString table = QString::fromStdString(change.table);
    const QString key = QString::fromStdString(change.key);
    const QJsonObject after = objectOf(change.after);
    const QJsonObject before = objectOf(change.before);
    const QString who = whoAndWhen(change);
    QStringList keys = box->subjectKeys();

    if (table == box->subjectTable() && keys.contains(key, Qt::CaseInsensitive)) {
        if (change.code != OrvoEventDelete) {
            const QString name = captionIn(after);
            box->addNote(Text::tr("Изменено: %1").arg(who) +
                         (name.isEmpty() ? QString() : Text::tr("; теперь") + named(name)));
            return;
        }
        keys.erase(std::remove_if(keys.begin(), keys.end(),
                                  [&](const QString& one) {
                                      return one.compare(key, Qt::CaseInsensitive) == 0;
                                  }),
                   keys.end());
        const QString line = Text::tr("Уже удалено%1: %2").arg(named(captionIn(before)), who);
        if (keys.isEmpty()) {
            box->withdraw(line + Text::tr(". Вопрос снят."));
        } else {
            box->setSubject(table, keys, box->subjectBelow());
            box->addNote(line);
        }
        return;
    }

    const QStringList links = linksBetween(table, box->subjectTable());
    const QStringList below = box->subjectBelow();
    const bool isBelow = table == box->subjectTable() && below.contains(key, Qt::CaseInsensitive);
    const bool isInside = isIn(after, links, keys + below);
    const bool wasInside = isBelow || isIn(before, links, keys + below);
    if (isInside && (change.code == OrvoEventInsert || !wasInside))
        box->withdraw(Text::tr("Внутри появилось%1: %2. Вопрос снят: посмотрите и решите заново.")
                          .arg(named(captionIn(after)), who));
    else if (wasInside && change.code == OrvoEventDelete)
        box->addNote(Text::tr("Внутри удалено%1: %2").arg(named(captionIn(before)), who));
    else if (wasInside)
        box->addNote(Text::tr("Внутри изменено: %1").arg(who));
}

} // namespace orvo::client
