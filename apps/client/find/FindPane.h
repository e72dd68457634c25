// FindPane.h: "Найти всё": a line over the window, and below it what is found while one types.
//
// It is a child of the window and no pop-up: changes go on reaching the editors, and what is found
// is looked for again when they do. It goes when something is chosen, by Esc, and when another part
// of the window gets the focus.
#ifndef ORVO_APPS_CLIENT_FIND_FINDPANE_H
#define ORVO_APPS_CLIENT_FIND_FINDPANE_H

#include "apps/client/find/FindModel.h"
#include "catalogue/LiveCatalogue.h"
#include "platform/client/PaletteCover.h"

#include <QFrame>
#include <QPointer>
#include <QTimer>

#include <array>

class QLabel;
class QLineEdit;
class QTreeView;

namespace orvo::app {

class FindPane : public QFrame {
    Q_OBJECT
public:
    static constexpr int mostShown = 200;

    /// The search listens to the catalogue; the catalogue outlives the pane.
    FindPane(catalogue::LiveCatalogue& live, std::shared_ptr<catalogue::Search> search,
             const QString& iconsPath, QWidget* window);
    ~FindPane() override;

    /// Shows itself and gets the focus; the words of last time are selected.
    void open();
    /// Goes, and gives the focus back to what had it.
    void dismiss();
    /// Records have changed.
    void outdate();
    const FindModel& model() const { return m_model; }

signals:
    void chosen(const orvo::catalogue::Found& found);
    /// Where that is used is wanted.
    void usesRequested(const orvo::catalogue::Found& found);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void place();
    void placeColumns(int width);
    void takeWidth(int column, int width);
    void search();
    void take(const catalogue::Findings& findings);
    void note(const catalogue::Findings& findings, bool lost);
    void choose();
    void focusMoved(QWidget* now);
    bool takeKey(const QKeyEvent& event);
    void askForUses();
    void showContextMenu(const QPoint& point);

    catalogue::LiveCatalogue& m_live;
    const std::shared_ptr<catalogue::Search> m_search; ///< used in the thread of the catalogue
    FindModel m_model;
    QLineEdit* m_text; // these: children
    QTreeView* m_view;
    QLabel* m_note;
    int m_placedWidth = 0; ///< for which the columns were laid out last
    /// Wanted for those before the path; less is shown where there is no room.
    std::array<int, FindModel::Path> m_widths{340, 160, 130};
    bool m_isDrawn = false; ///< they are the user's, of now or of last time
    bool m_isPlacing = false;
    QTimer m_againSoon;
    QPointer<QWidget> m_cameFrom;              ///< what had the focus
    QPointer<QWidget> m_below;                 ///< what had it in this window
    client::PaletteCover m_palettes;           ///< for as long as the pane is shown
    std::shared_ptr<std::atomic<bool>> m_stop; ///< of the search that runs; null: none was made
    bool m_isWhole = false;                    ///< all that was found for the text is shown
    bool m_choosesWhenFound = false;           ///< Enter came before that
};

} // namespace orvo::app

#endif
