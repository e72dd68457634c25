// ElidedLabel.h: a line of text that gives way where there is less room than it needs.
//
// text() is the whole text whatever is painted, and that is what screen readers get. The label
// never holds its window wide; whoever places it says by setRoom how much of it is to be seen.
#ifndef ORVO_APPS_CLIENT_ELIDEDLABEL_H
#define ORVO_APPS_CLIENT_ELIDEDLABEL_H

#include <QLabel>

namespace orvo::app {

class ElidedLabel : public QLabel {
    Q_OBJECT
public:
    /// Plain text; `mode`: which part becomes "…".
    ElidedLabel(const QString& text, Qt::TextElideMode mode, QWidget* parent);

    /// What the whole text takes, with its margins.
    int wholeWidth() const { return QLabel::sizeHint().width(); }
    /// Asks the layout for that width instead of what the whole text takes.
    void setRoom(int width);
    /// Whether less is painted than the whole.
    bool isCut() const { return width() < wholeWidth(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Qt::TextElideMode m_mode;
    int m_room = -1; ///< below 0: as wide as the text
};

} // namespace orvo::app

#endif
