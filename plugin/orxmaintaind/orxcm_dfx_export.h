#ifndef ORX_ORXCM_ORXMAINTAIND_ORXCM_DFX_EXPORT_H
#define ORX_ORXCM_ORXMAINTAIND_ORXCM_DFX_EXPORT_H

// Marks what liborxcm_dfx.so exports; everything else in the plug-in is hidden. The core only
// needs the two registered interfaces, but tests, benchmarks and the daemon use the client's
// classes directly.
#ifndef ORXCM_DFX_EXPORT
#define ORXCM_DFX_EXPORT __attribute__((visibility("default")))
#endif

#endif
