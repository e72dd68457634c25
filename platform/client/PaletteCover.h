// PaletteCover.h: what is shown over a window must be seen, and a palette of a module stands above
// that window.
#ifndef ORVO_PLATFORM_CLIENT_PALETTECOVER_H
#define ORVO_PLATFORM_CLIENT_PALETTECOVER_H

#include <QPointer>
#include <QWidget>

#include <utility>
#include <vector>

namespace orvo::client {

/// Has the palettes of a window give way for as long as they are covered: child windows with the
/// property "orvoPalette", which have a slot `giveWay(bool)` and come back as they were.
class PaletteCover {
public:
    PaletteCover() = default;
    ~PaletteCover() { uncover(); }
    PaletteCover(const PaletteCover&) = delete;
    PaletteCover& operator=(const PaletteCover&) = delete;

    void cover(const QWidget& window) {
        for (QWidget* child : window.findChildren<QWidget*>())
            if (child->isWindow() && child->isVisible() &&
                child->property("orvoPalette").toBool()) {
                m_palettes.emplace_back(child);
                QMetaObject::invokeMethod(child, "giveWay", Q_ARG(bool, true));
            }
    }
    void uncover() {
        for (const QPointer<QWidget>& palette : std::exchange(m_palettes, {}))
            if (palette)
                QMetaObject::invokeMethod(palette, "giveWay", Q_ARG(bool, false));
    }

private:
    std::vector<QPointer<QWidget>> m_palettes;
};

} // namespace orvo::client

#endif
