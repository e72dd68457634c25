// ExitCodes.h: how the viewer of forms tells why it ended.
#ifndef ORVO_APPS_FORMVIEW_EXITCODES_H
#define ORVO_APPS_FORMVIEW_EXITCODES_H

namespace orvo::formview {

constexpr int exitOutOfMemory = 77;

} // namespace orvo::formview

#endif
