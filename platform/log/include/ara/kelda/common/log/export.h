#ifndef ARA_KELDA_COMMON_LOG_EXPORT_H
#define ARA_KELDA_COMMON_LOG_EXPORT_H

// Marks what kelda_log exports; everything else in the library is hidden.
#define KELDA_LOG_EXPORT __attribute__((visibility("default")))

#endif  // ARA_KELDA_COMMON_LOG_EXPORT_H
