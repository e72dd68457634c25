// InvariantScope.h: where a class looks at its invariants.
#ifndef ORVO_PLATFORM_STORE_INVARIANTSCOPE_H
#define ORVO_PLATFORM_STORE_INVARIANTSCOPE_H

namespace orvo::store {

/// Calls the object's checkInvariants() where it begins and where it ends, also on the way of an
/// exception. Costs nothing in builds without assertions.
template <typename Object>
class InvariantScope {
public:
    explicit InvariantScope([[maybe_unused]] const Object& object)
#ifndef NDEBUG
        : m_object(object) {
        m_object.checkInvariants();
    }
    ~InvariantScope() {
        m_object.checkInvariants();
    }
#else
    {
    }
    ~InvariantScope() = default;
#endif
    InvariantScope(const InvariantScope&) = delete;
    InvariantScope& operator=(const InvariantScope&) = delete;

private:
#ifndef NDEBUG
    const Object& m_object;
#endif
};

} // namespace orvo::store

#endif
