#include "apps/client/PresenceView.h"

#include "apps/client/Look.h"
#include "apps/client/StatusLine.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"

#include <QAbstractScrollArea>
#include <QDateTime>
#include <QThread>

#include <algorithm>
#include <cstring>

namespace orvo::app {

namespace {

constexpr int shownNames = 3;
constexpr int longestName = 30;

/// "с 09:12", with the date if that is not today's.
QString sinceText(double time) {
    const QDateTime moment = QDateTime::fromSecsSinceEpoch(static_cast<qint64>(time));
    const bool today = moment.date() == QDate::currentDate();
    return Text::tr("с ") +
           moment.toString(today ? QStringLiteral("HH:mm") : Text::tr("dd.MM.yyyy HH:mm"));
}

QString fromUtf8(const std::string& text) {
    return QString::fromStdString(text);
}

/// "Иванов И.И. (ivanov), ws-3, "; the login alone if there is no name.
QString whoAndWhere(const QString& name, const store::PresenceEntry& one) {
    const QString login = fromUtf8(one.login);
    QString text = name == login ? login : QStringLiteral("%1 (%2)").arg(name, login);
    if (!one.place.empty())
        text += QStringLiteral(", ") + fromUtf8(one.place);
    return text + QStringLiteral(", ");
}

QString textOf(const MDArray* array, const MDRData* record, const char* field) {
    const char* text = nullptr;
    const MDRField found = MDRFldByName(array, field);
    return MDRGetTextPtr(found, record, &text) == MDX_OK && text ? fromUtf8(mdx::toUtf8(text))
                                                                 : QString();
}

} // namespace

PresenceView::PresenceView(std::unique_ptr<store::Presence> presence, store::Store& users,
                           HostApp& app, const client::ModuleRegistry& modules, StatusLine& line)
    : m_follower(std::move(presence))
    , m_users(users)
    , m_app(app)
    , m_modules(modules)
    , m_line(line) {
    names(); // while the store is known to answer
    connect(&m_follower, &client::PresenceFollower::changed, this, &PresenceView::show);
    connect(&m_look, &QTimer::timeout, this, &PresenceView::lookAtEdits);
    m_look.start(lookMs);
}

void PresenceView::changed(const store::Change& change) {
    m_namesAreOld = m_namesAreOld || change.table == table::Users;
}

void PresenceView::lookAtEdits() {
    if (QThread::currentThread()->loopLevel() > 1)
        return; // a slot of a module waits
    const auto now = static_cast<double>(QDateTime::currentSecsSinceEpoch());
    std::vector<store::OpenEdit> edits;
    for (const QPointer<COrvoCliMod>& module : m_modules.modules(client::ModuleState::Running)) {
        const QString what = module->ModEditText();
        if (what.isEmpty())
            continue;
        const auto [table, key] = module->ModEditRecord();
        store::OpenEdit edit{table.toStdString(), key.toStdString(), now, what.toStdString()};
        for (const store::OpenEdit& before : m_edits)
            if (before.table == edit.table && before.key == edit.key)
                edit.since = before.since;
        edits.push_back(std::move(edit));
    }
    if (edits == m_edits)
        return;
    m_edits = edits;
    m_follower.announce(std::move(edits));
}

const QHash<QString, QString>& PresenceView::names() {
    if (!m_namesAreOld)
        return m_names;
    m_namesAreOld = false;
    CMDArray users;
    if (!m_users.fetch(table::Users, users.array).ok())
        return m_names;
    m_names.clear();
    const MDRField program = MDRFldByName(users.array, field::program);
    for (int32_t i = 0; const MDRData* user = MDARec(users.array, 0, i); ++i) {
        const auto text = [&](const char* field) { return textOf(users.array, user, field); };
        const QString login = text(field::login_);
        int32_t isProgram = 0;
        MDRGetAsInt32(program, user, &isProgram);
        m_names.insert(login.toCaseFolded(),
                       userCaption(login, text(field::lastName), text(field::firstName),
                                   text(field::midlName), isProgram != 0));
    }
    return m_names;
}

QString PresenceView::nameOf(const std::string& login) {
    const QString text = fromUtf8(login);
    return names().value(text.toCaseFolded(), text);
}

void PresenceView::show() {
    QStringList shown, lines;
    HostApp::Marks marks;
    for (const store::PresenceEntry& one : m_follower.others()) {
        const QString name = oneLine(nameOf(one.login));
        const QString who = whoAndWhere(name, one);
        if (!shown.contains(clipped(name, longestName)))
            shown << clipped(name, longestName);
        lines << who + sinceText(one.since);
        for (const store::OpenEdit& edit : one.edits) {
            lines << Text::tr("    правит: %1, %2").arg(fromUtf8(edit.what), sinceText(edit.since));
            if (edit.key.empty())
                continue;
            RecordMark& mark = marks[HostApp::markKey(fromUtf8(edit.table), fromUtf8(edit.key))];
            mark.label += (mark.label.isEmpty() ? QString() : QStringLiteral(", ")) + name;
            mark.tip += (mark.tip.isEmpty() ? QString() : QStringLiteral("\n")) +
                        Text::tr("Правит ") + who + sinceText(edit.since);
        }
    }
    QString names = shown.mid(0, shownNames).join(QStringLiteral(", "));
    if (shown.size() > shownNames)
        names += Text::tr(" и ещё %1").arg(shown.size() - shownNames);
    m_line.setOthers(names, lines.join(QLatin1Char('\n')));
    m_app.setMarks(std::move(marks));
    for (const QPointer<COrvoCliMod>& module : m_modules.modules(client::ModuleState::Running))
        for (QAbstractScrollArea* area : module->findChildren<QAbstractScrollArea*>())
            area->viewport()->update();
}

} // namespace orvo::app
