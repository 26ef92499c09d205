#ifndef ORX_MAINTAIND_CONFIG_EXPORT_H
#define ORX_MAINTAIND_CONFIG_EXPORT_H

// Marks what maintaind_msg exports; everything else in the library is hidden.
#define MAINTAIND_MSG_EXPORT __attribute__((visibility("default")))

#endif  // ORX_MAINTAIND_CONFIG_EXPORT_H
