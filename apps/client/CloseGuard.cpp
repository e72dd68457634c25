#include "apps/client/CloseGuard.h"

#include "frame/Text.h"

#include <QMessageBox>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace orvo::app {

CloseGuard::CloseGuard(QObject* parent) : QObject(parent) {}

CloseGuard::~CloseGuard() = default;

void CloseGuard::addSource(Source source) {
    m_sources.push_back(std::move(source));
}

std::vector<CloseGuard::Unsaved> CloseGuard::unsaved(const QObject* owner) const {
    std::vector<Unsaved> all;
    for (const Source& source : m_sources)
        for (Unsaved& one : source())
            if (!owner || one.owner == owner)
                all.push_back(std::move(one));
    return all;
}

bool CloseGuard::isClean() const {
    return unsaved().empty();
}

void CloseGuard::dropAll() {
    for (const Unsaved& one : unsaved())
        if (one.drop)
            one.drop();
}

bool CloseGuard::mayGo(QWidget* window, const QString& title, const Answers& answers,
                       const QObject* owner) {
    if (m_question)
        return false;
    const std::vector<Unsaved> all = unsaved(owner);
    if (all.empty())
        return true;
    constexpr size_t mostLines = 10;
    QStringList lines;
    for (size_t i = 0; i < std::min(all.size(), mostLines); ++i)
        lines << QStringLiteral("•  ") + all[i].what;
    if (all.size() > mostLines)
        lines << Text::tr("… и ещё %1").arg(all.size() - mostLines);

    auto* box = new QMessageBox(window);
    box->setObjectName(QStringLiteral("closeQuestion"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(QMessageBox::Question);
    box->setTextFormat(Qt::PlainText);
    box->setWindowTitle(title);
    box->setText(Text::tr("Не сохранено:\n\n%1\n\nСохранить?").arg(lines.join('\n')));
    QPushButton* save = box->addButton(Text::tr("Сохранить"), QMessageBox::AcceptRole);
    QPushButton* drop = box->addButton(Text::tr("Не сохранять"), QMessageBox::DestructiveRole);
    QPushButton* stay = box->addButton(Text::tr("Остаться"), QMessageBox::RejectRole);
    save->setObjectName(QStringLiteral("closeSave"));
    drop->setObjectName(QStringLiteral("closeDrop"));
    stay->setObjectName(QStringLiteral("closeStay"));
    box->setDefaultButton(save);
    box->setEscapeButton(stay);
    m_question = box;
    // Queued: the box and its modality are gone before modules go.
    connect(box, &QMessageBox::buttonClicked, this,
            [this, save, drop, window = QPointer<QWidget>(window), title, answers,
             owner](QAbstractButton* button) {
                const bool saves = button == save;
                const bool drops = button == drop;
                QMetaObject::invokeMethod(
                    this,
                    [this, saves, drops, window, title, answers, owner] {
                        m_question.clear();
                        if (saves)
                            answered(window, title, answers, owner);
                        else if (drops)
                            answers.go();
                        else if (answers.stay)
                            answers.stay();
                    },
                    Qt::QueuedConnection);
            });
    box->open();
    return false;
}

/// What could not be stored keeps the window; what a save left behind elsewhere is asked about.
void CloseGuard::answered(QWidget* window, const QString& title, const Answers& answers,
                          const QObject* owner) {
    for (const Unsaved& one : unsaved(owner))
        if (!one.save()) {
            if (answers.stay)
                answers.stay();
            return;
        }
    if (mayGo(window, title, answers, owner))
        answers.go();
}

} // namespace orvo::app
