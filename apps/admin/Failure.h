// Failure.h: how a verb gives up. Thrown anywhere below main, which prints it as the one line on
// standard error and exits with 2, or 130 if the user wanted it.
#ifndef ORVO_ADMIN_FAILURE_H
#define ORVO_ADMIN_FAILURE_H

#include "frame/StdText.h"
#include "platform/store/Maintenance.h"

#include <stdexcept>
#include <string>

namespace orvo::admin {

/// What failed and why, UTF-8, without a line feed at the end.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The user ended the work.
class Interruption : public Failure {
public:
    using Failure::Failure;
};

/// Throws a Failure "<what>: <text of the status>" unless the status is good; an Interruption if
/// the work was stopped.
inline void require(const store::Status& status, const std::string& what) {
    if (status.code == store::Stopped)
        throw Interruption(what + StdText::tr(": прервано"));
    if (!status.ok())
        throw Failure(what + ": " + status.text);
}

} // namespace orvo::admin

#endif
