// What other modules need to know of date-times (datetime.h).
#ifndef ZELVANE_CORE_DATETIME_INTERNAL_H
#define ZELVANE_CORE_DATETIME_INTERNAL_H

namespace zelvane::internal {

constexpr int kDaySeconds = 86400;  // date-times have no leap seconds

}  // namespace zelvane::internal

#endif
