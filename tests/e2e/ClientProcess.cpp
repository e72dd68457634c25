#include "tests/e2e/ClientProcess.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QThread>

#include <algorithm>

namespace orvo::test {

namespace {

QRect rectOf(const QJsonValue& value) {
    const QJsonArray r = value.toArray();
    return r.size() == 4 ? QRect(r[0].toInt(), r[1].toInt(), r[2].toInt(), r[3].toInt()) : QRect();
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Tree

int Tree::find(const QString& text, int column) const {
    for (size_t i = 0; i < rows.size(); ++i)
        if (rows[i].cells.value(column) == text)
            return static_cast<int>(i);
    return -1;
}

int Tree::parentOf(int row) const {
    int up = row - 1;
    while (up >= 0 && rows[static_cast<size_t>(up)].depth >= rows[static_cast<size_t>(row)].depth)
        --up;
    return up;
}

int Tree::current() const {
    for (size_t i = 0; i < rows.size(); ++i)
        if (rows[i].current)
            return static_cast<int>(i);
    return -1;
}

QString Tree::text() const {
    QString all;
    for (const TreeRow& row : rows)
        all +=
            QString(row.depth * 2, ' ') + row.cells.join(" | ") + (row.current ? " *" : "") + '\n';
    return all;
}

// ---------------------------------------------------------------------------------------------
// ClientProcess

ClientProcess::ClientProcess(const QString& directory, const QString& store, const QString& user,
                             const QRect& place, const QStringList& which, const QStringList& more)
    : login(user)
    , modules(which)
    , m_socketPath(directory + '/' + user + ".sock")
    , m_place(place) {
    QProcessEnvironment own = QProcessEnvironment::systemEnvironment();
    own.insert("XDG_CONFIG_HOME", directory + "/config-" + user);
    m_process.setProcessEnvironment(own);
    m_process.setStandardOutputFile(directory + '/' + user + ".out");
    m_process.setStandardErrorFile(directory + '/' + user + ".err", QIODevice::Append);
    QStringList arguments{"--store",   store,        "--login",
                          user,        "--work-dir", directory + "/work-" + user,
                          "--inspect", m_socketPath};
    for (const QString& module : modules)
        arguments << "--module" << module;
    arguments << more;
    m_process.start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-client", arguments);
    m_process.waitForStarted();
}

ClientProcess::~ClientProcess() {
    m_socket.abort();
    if (!isRunning())
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(5000)) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

bool ClientProcess::waitUp() {
    QElapsedTimer timer;
    timer.start();
    while (m_socket.state() != QLocalSocket::ConnectedState && timer.elapsed() < 60000) {
        m_socket.connectToServer(m_socketPath);
        if (!m_socket.waitForConnected(200))
            QThread::msleep(50);
    }
    while (timer.elapsed() < 60000 && m_socket.state() == QLocalSocket::ConnectedState) {
        const QJsonObject state = ask("state");
        if (state["running"].toInt() >= std::max<int>(1, modules.size())) {
            const char* first = modules.isEmpty()          ? "deskTree"
                                : modules.last() == "Menu" ? "tvDesck"
                                                           : "tvRes";
            if (isInPlace() && state["settled"].toBool() && !tree(first).rows.empty())
                return true;
            moveIntoPlace();
        }
        QThread::msleep(200);
    }
    return false;
}

bool ClientProcess::isInPlace() {
    if (m_place.isEmpty())
        return true;
    for (const QJsonValue& window : ask("windows")["windows"].toArray()) {
        const QRect rect = rectOf(window.toObject()["rect"]);
        // The frame of the window manager may come on top.
        if (rect.size() == m_place.size() &&
            (rect.topLeft() - m_place.topLeft()).manhattanLength() < 60)
            return true;
    }
    return false;
}

void ClientProcess::moveIntoPlace() {
    const auto text = [](int number) { return QString::number(number); };
    QProcess::execute("xdotool", {"search", "--all", "--onlyvisible", "--pid",
                                  text(static_cast<int>(m_process.processId())), "--name", "^Orvo",
                                  "windowmove", text(m_place.x()), text(m_place.y()), "windowsize",
                                  text(m_place.width()), text(m_place.height())});
}

bool ClientProcess::isRunning() {
    m_process.waitForFinished(0); // no loop runs here that would tell of its end
    return m_process.state() == QProcess::Running;
}

void ClientProcess::killHard() {
    m_socket.abort();
    m_process.kill();
    m_process.waitForFinished();
}

QString ClientProcess::errors() {
    QFile file(m_socketPath.left(m_socketPath.size() - 5) + ".err");
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QJsonObject ClientProcess::ask(const QString& question) {
    m_socket.write(question.toUtf8() + '\n');
    QElapsedTimer timer;
    timer.start();
    while (!m_socket.canReadLine() && m_socket.state() == QLocalSocket::ConnectedState &&
           timer.elapsed() < 60000)
        m_socket.waitForReadyRead(1000);
    if (!m_socket.canReadLine() && m_socket.state() == QLocalSocket::ConnectedState) {
        // An answer that comes late must not be taken for that to the next question.
        m_socket.abort();
        m_socket.connectToServer(m_socketPath);
        m_socket.waitForConnected(1000);
    }
    return QJsonDocument::fromJson(m_socket.readLine()).object();
}

Tree ClientProcess::tree(const char* name) {
    const QJsonObject answer = ask(QString("tree ") + name);
    Tree tree;
    tree.rect = rectOf(answer["rect"]);
    tree.focus = answer["focus"].toBool();
    for (const QJsonValue& value : answer["rows"].toArray()) {
        const QJsonObject one = value.toObject();
        TreeRow row;
        row.depth = one["depth"].toInt();
        for (const QJsonValue& cell : one["cells"].toArray())
            row.cells << cell.toString();
        row.expanded = one["expanded"].toBool();
        row.current = one["current"].toBool();
        row.selected = one["selected"].toBool();
        for (const QJsonValue& rect : one["rects"].toArray())
            row.rects.push_back(rectOf(rect));
        tree.rows.push_back(row);
    }
    return tree;
}

std::vector<Control> ClientProcess::controls(const QString& nameOrText) {
    std::vector<Control> list;
    for (const QJsonValue& value : ask("control " + nameOrText)["controls"].toArray()) {
        const QJsonObject one = value.toObject();
        list.push_back({one["text"].toString(), one["class"].toString(), one["enabled"].toBool(),
                        one["visible"].toBool(), rectOf(one["rect"])});
    }
    return list;
}

bool ClientProcess::isEnabled(const char* name) {
    const std::vector<Control> list = controls(name);
    return !list.empty() && list.front().enabled;
}

QStringList ClientProcess::table(const char* name) {
    QStringList lines =
        ask(QString("table ") + name)["text"].toString().split('\n', Qt::SkipEmptyParts);
    if (!lines.isEmpty())
        lines.removeFirst();
    lines.sort();
    return lines;
}

} // namespace orvo::test
