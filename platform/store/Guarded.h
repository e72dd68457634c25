// Guarded.h: keeps exceptions from crossing the interface of a store.
#ifndef ORVO_PLATFORM_STORE_GUARDED_H
#define ORVO_PLATFORM_STORE_GUARDED_H

#include "platform/store/Store.h"
#include "platform/store/WaitPolicy.h"

namespace orvo::store {

/// The Status of an exception being handled.
Status statusOfException() noexcept;

/// Runs the body of an operation, which gives a Status; an exception becomes a Status too.
template <typename Body>
Status guarded(const Body& body) noexcept {
    const CallMark mark;
    try {
        return body();
    } catch (...) {
        return statusOfException();
    }
}

} // namespace orvo::store

#endif
