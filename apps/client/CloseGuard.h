// CloseGuard.h: asks before something that was typed goes with a window or a module.
//
// Who keeps something of that kind names it in a source: open edits of the modules, and whatever
// else is not yet in the store. One question names all of it and offers to save, not to save, and
// to stay.
#ifndef ORVO_APPS_CLIENT_CLOSEGUARD_H
#define ORVO_APPS_CLIENT_CLOSEGUARD_H

#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <vector>

class QWidget;

namespace orvo::app {

class CloseGuard : public QObject {
    Q_OBJECT
public:
    /// One thing that would be lost.
    struct Unsaved {
        QString what; ///< a line of the question: "Редактор меню: элемент «Архив»"
        /// Tries to store it. False if it is not stored; why, the user has been told.
        std::function<bool()> save;
        /// Gives it up; null: it goes with the window or the module.
        std::function<void()> drop = {};
        const QObject* owner = nullptr; ///< the module in which it is open, if it is in one
    };
    using Source = std::function<std::vector<Unsaved>()>;
    struct Answers {
        std::function<void()> go;   ///< saved, or given up
        std::function<void()> stay; ///< nothing changes; may be null
    };

    explicit CloseGuard(QObject* parent = nullptr);
    ~CloseGuard() override;

    /// Asked again each time, in the order of adding.
    void addSource(Source source);
    bool isClean() const;
    /// For a caller whose `go` leaves windows and modules open: gives up what was not saved.
    void dropAll();
    /// Whether its question stands.
    bool isAsking() const { return !m_question.isNull(); }
    /// True if nothing would be lost: the caller goes on at once, and no answer is called. Else the
    /// question is put over `window`, and one of the answers is called later, from the event loop.
    /// While a question stands another call gives false and is forgotten. `owner`: only what is
    /// open in that module is asked about and saved.
    bool mayGo(QWidget* window, const QString& title, const Answers& answers,
               const QObject* owner = nullptr);

private:
    std::vector<Unsaved> unsaved(const QObject* owner = nullptr) const;
    void answered(QWidget* window, const QString& title, const Answers& answers,
                  const QObject* owner);

    std::vector<Source> m_sources;
    QPointer<QMessageBox> m_question; ///< deletes itself when closed
};

} // namespace orvo::app

#endif
