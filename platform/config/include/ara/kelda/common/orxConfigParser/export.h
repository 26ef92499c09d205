#ifndef ARA_KELDA_COMMON_ORXCONFIGPARSER_EXPORT_H
#define ARA_KELDA_COMMON_ORXCONFIGPARSER_EXPORT_H

// Marks what orx_config exports; everything else in the library is hidden.
#define ORX_CONFIG_EXPORT __attribute__((visibility("default")))

#endif  // ARA_KELDA_COMMON_ORXCONFIGPARSER_EXPORT_H
