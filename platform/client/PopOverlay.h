// PopOverlay.h: what the message box and the progress bar have in common: a dimmed sheet over the
// module's window with a panel in its middle.
#ifndef ORVO_PLATFORM_CLIENT_POPOVERLAY_H
#define ORVO_PLATFORM_CLIENT_POPOVERLAY_H

#include "platform/client/PaletteCover.h"

#include <QLabel>
#include <QScrollArea>
#include <QWidget>

class QVBoxLayout;

namespace orvo::client {

/// The panel. Tab stays among its widgets, so that nothing under the sheet gets the keyboard.
class PopPanel : public QWidget {
    Q_OBJECT
public:
    explicit PopPanel(QWidget* parent);

protected:
    bool focusNextPrevChild(bool next) override;
};

/// The sheet: fills `owner`, and keeps `owner` as large as its own parent.
class PopOverlay : public QWidget {
    Q_OBJECT
public:
    /// `owner` is the pop-up; the sheet becomes its child, and it swallows the mouse from then on.
    explicit PopOverlay(QWidget* owner);
    ~PopOverlay() override;

    /// The panel's column, to be filled.
    QVBoxLayout* column() const { return m_column; }
    /// Lays the pop-up over its whole parent, above everything there; palettes give way until it is
    /// hidden. For the pop-up's showEvent.
    void cover();

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* m_owner; ///< the parent, which owns this
    PaletteCover m_palettes;
    PopPanel* m_panel;
    QVBoxLayout* m_column;
};

/// As high as what is in it, if the window has the room; else what is in it is scrolled.
class PopScroll : public QScrollArea {
    Q_OBJECT
public:
    explicit PopScroll(QWidget* parent);
    /// The layout of what is in it.
    QVBoxLayout* column() const { return m_column; }
    /// PgUp, PgDn, Home and End; false for another key.
    bool takeKey(int key);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QVBoxLayout* m_column;
};

/// A label for texts that came from data: shown as they are, without markup, wrapped at a width
/// that suits the text, even inside a word.
class PopText : public QLabel {
    Q_OBJECT
public:
    /// `scale`: of the font's size; `bold`: a heading.
    PopText(QWidget* parent, double scale, bool bold);
    void setPlain(const QString& text);
};

} // namespace orvo::client

#endif
