#include "WritingPlan.h"

#include "frame/OrvoClient.h"
#include "frame/Vocabulary.h"
#include "platform/client/Session.h"
#include "platform/mdx/MdxBuild.h"
#include "tests/store/Batch.h"

#include <QCoreApplication>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace orvo::test {

namespace {

constexpr const char* prefix = "trial-";

} // namespace

WritingPlan::WritingPlan(unsigned seed, std::string desktop)
    : m_random(seed)
    , m_desktop(std::move(desktop)) {}

QByteArray WritingPlan::content(int version) {
    const QByteArray word = QByteArray::number(version) + ' ';
    return word.repeated(10 + version * 7919 % 60000);
}

void WritingPlan::advance() {
    ++m_steps;
    m_acts.clear();
    m_puts.clear();
    if (below(5) == 0) {
        for (unsigned left = 1 + below(3); left > 0; --left) {
            const std::string name = std::string(prefix) + std::to_string(below(12)) + ".txt";
            if (std::find(m_puts.begin(), m_puts.end(), name) == m_puts.end())
                m_puts.push_back(name);
            m_files[name] = m_steps;
        }
        return;
    }
    for (unsigned left = 1 + below(9); left > 0; --left) {
        Element element{"элемент " + std::to_string(++m_made), m_made};
        auto found = m_elements.begin();
        if (!m_elements.empty())
            std::advance(found, below(unsigned(m_elements.size())));
        const bool touched = found == m_elements.end() ||
                             std::any_of(m_acts.begin(), m_acts.end(),
                                         [&](const Act& act) { return act.key == found->first; });
        const unsigned what = touched ? 0 : below(m_elements.size() > 60 ? 4 : 3);
        if (what <= 1) {
            const std::string key = prefix + std::to_string(m_made);
            m_elements[key] = element;
            m_acts.push_back({MDX_INSERT, key, element});
        } else if (what == 2) {
            found->second = element;
            m_acts.push_back({MDX_UPDATE, found->first, element});
        } else {
            m_acts.push_back({MDX_DELETE, found->first, {}});
            m_elements.erase(found);
        }
    }
}

bool WritingPlan::write(COrvoCliSes& session) const {
    if (!m_puts.empty()) {
        std::vector<QByteArray> bytes;
        std::vector<store::FileToPut> puts;
        for (const std::string& name : m_puts)
            bytes.push_back(content(m_files.at(name)));
        for (size_t i = 0; i < m_puts.size(); ++i)
            puts.push_back(
                {"", m_puts[i], {bytes[i].constData(), static_cast<size_t>(bytes[i].size())}, {}});
        const store::Status status = client::sessionStore(session).filePut(puts);
        std::fprintf(stderr, "%s", status.ok() ? "" : (status.text + '\n').c_str());
        return status.ok();
    }
    store::test::Batch batch(table::Menu);
    for (const Act& act : m_acts) {
        if (act.flag == MDX_DELETE)
            batch.remove(act.key.c_str());
        else
            batch.add(static_cast<int>(act.flag), act.key.c_str(),
                      {{field::FolderKey, QString::fromStdString(m_desktop)},
                       {field::caption, QString::fromStdString(act.element.caption)},
                       {field::order_, act.element.order}});
    }
    return session.SqlUpdate(table::Menu, batch.array.array, true, nullptr) != 0;
}

QString WritingPlan::filesDifference(store::Store& store) const {
    size_t count = 0;
    const store::Status listed =
        store.fileArea([&](const std::string& /*path*/, const store::StoredFile& file) {
            count += file.name.starts_with(prefix) ? 1 : 0;
        });
    if (!listed.ok())
        return QString::fromStdString(listed.text);
    if (count != m_files.size())
        return QString("%1 files instead of %2").arg(count).arg(m_files.size());
    for (const auto& [name, version] : m_files) {
        std::vector<store::StoredFile> files;
        const store::Status got = store.fileGet("", name, true, &files);
        if (!got.ok() || files.size() != 1)
            return QString("no file %1: %2").arg(name.c_str(), got.text.c_str());
        if (files[0].bytes != content(version).toStdString())
            return QString("file %1 is not its version %2").arg(name.c_str()).arg(version);
    }
    return {};
}

QString WritingPlan::difference(store::Store& store) const {
    CMDArray array;
    const store::Status status = store.fetch(table::Menu, array.array);
    if (!status.ok())
        return QString::fromStdString(status.text);
    QStringList present, wanted;
    const QString lines =
        store::test::dump(array.array, {field::KeyLink, field::caption, field::order_});
    for (const QString& line : lines.split('\n'))
        if (line.startsWith(prefix))
            present << line;
    for (const auto& [key, element] : m_elements)
        wanted << QString("%1|%2|%3")
                      .arg(key.c_str(), QString::fromStdString(element.caption))
                      .arg(element.order);
    present.sort();
    wanted.sort();
    if (present != wanted) {
        int i = 0;
        while (i < present.size() && i < wanted.size() && present[i] == wanted[i])
            ++i;
        return QString("%1 elements instead of %2; %3 instead of %4")
            .arg(present.size())
            .arg(wanted.size())
            .arg(present.value(i, "nothing"), wanted.value(i, "nothing"));
    }
    return filesDifference(store);
}

PlannedWriter::PlannedWriter(std::string url, unsigned seed, const QString& desktop)
    : m_url(std::move(url))
    , m_desktop(desktop.toStdString())
    , m_seed(seed)
    , m_certain(seed, m_desktop) {}

PlannedWriter::~PlannedWriter() {
    m_process.kill();
    m_process.waitForFinished();
}

bool PlannedWriter::start() {
    m_process.start(QCoreApplication::applicationFilePath(),
                    {"--plan", QString::fromStdString(m_url), QString::number(m_seed),
                     QString::fromStdString(m_desktop), QString::number(steps())});
    return m_process.waitForStarted();
}

bool PlannedWriter::killAfter(int milliseconds) {
    const bool ended = m_process.waitForFinished(milliseconds);
    m_process.kill();
    m_process.waitForFinished();
    const QByteArray said = m_process.readAllStandardOutput();
    const int last = said.left(said.lastIndexOf('\n')).split('\n').last().toInt();
    while (steps() < last)
        m_certain.advance();
    m_words = QString::fromUtf8(m_process.readAllStandardError());
    return !ended;
}

QString PlannedWriter::difference(store::Store& store) {
    const QString first = m_certain.difference(store);
    if (first.isEmpty())
        return {};
    WritingPlan next = m_certain;
    next.advance();
    const QString second = next.difference(store);
    if (!second.isEmpty())
        return QString("after step %1: %2; after the next: %3").arg(steps()).arg(first, second);
    m_certain = next;
    ++m_unsaid;
    return {};
}

bool isPlannedWriter(int argc, char** argv, int* result) {
    if (argc != 6 || std::string_view(argv[1]) != "--plan")
        return false;
    *result = 1;
    std::signal(SIGXFSZ, SIG_IGN);
    store::Status status;
    auto opened = store::open(argv[2], {"writer", false}, &status);
    if (!opened) {
        std::fprintf(stderr, "%s\n", status.text.c_str());
        return true;
    }
    const auto session = client::makeSession(std::move(opened), &status);
    QObject::connect(&client::sessionEvents(*session), &client::SessionEvents::failed,
                     [](const client::Failure& failure) {
                         std::fprintf(stderr, "%s\n", failure.text.toUtf8().constData());
                     });
    WritingPlan plan(unsigned(std::strtoul(argv[3], nullptr, 10)), argv[4]);
    const int done = std::atoi(argv[5]);
    while (plan.steps() < done)
        plan.advance();
    for (;;) {
        plan.advance();
        if (!plan.write(*session))
            return true;
        std::printf("%d\n", plan.steps());
        std::fflush(stdout);
    }
}

} // namespace orvo::test
