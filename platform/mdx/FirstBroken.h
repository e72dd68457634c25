// FirstBroken.h: what the checks of invariants hand from class to class.
#ifndef ORVO_PLATFORM_MDX_FIRSTBROKEN_H
#define ORVO_PLATFORM_MDX_FIRSTBROKEN_H

#include <string>

namespace orvo::mdx {

/// The first invariant that was found broken; what follows from it is of no interest.
class FirstBroken {
public:
    /// Whether none has been broken so far, this one included.
    bool need(bool holds, const char* invariant) {
        if (!holds && m_text.empty())
            m_text = invariant;
        return none();
    }
    bool none() const noexcept { return m_text.empty(); }
    const std::string& text() const noexcept { return m_text; }

private:
    std::string m_text;
};

} // namespace orvo::mdx

#endif
