// OpenEdit.h: which edit of the menu editor is open. There is one at a time in both trees together,
// so the two edits share one of these, and nobody else writes it.
#ifndef ORVO_MENU_OPENEDIT_H
#define ORVO_MENU_OPENEDIT_H

#include <cstdint>

namespace orvo::menu {

enum EditMode : int32_t {
    NoEdit = 0,
    NewDesck = 1,   ///< a new desktop or folder stands in tvDesck, not yet saved
    NewElement = 2, ///< a new menu folder stands in tvMenu, not yet saved
    RenameDesck = 3,
    EditElement = 4, ///< a value of an existing element was changed in the passport
};

class OpenEdit {
public:
    /// Of this object, as long as it lives.
    const int32_t& mode() const { return m_mode; }

private:
    friend class DesckEdit;
    friend class ElementEdit;

    int32_t m_mode = NoEdit;
};

} // namespace orvo::menu

#endif
