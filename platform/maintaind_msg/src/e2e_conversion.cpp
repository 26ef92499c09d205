#include <array>
#include <cstdint>

#include "orx/maintaind/config/orx_maintaind_config.h"

namespace orx {
namespace maintaind {
namespace config {

namespace {

using CoreProfile = vorx::vcc::api::types::E2EXf_Profile;
using CoreDataIdMode = vorx::vcc::api::types::E2EXf_DataIDMode;

// The transformer values the records carry. Each maps to the record enumerator of
// the same number; the core's other values (profiles 1 and 2, data-id modes 1 and 2)
// have no counterpart on the daemon's side.
constexpr std::array<CoreProfile, 8> kReportedProfiles{
    CoreProfile::PROFILE_04, CoreProfile::PROFILE_05, CoreProfile::PROFILE_06,
    CoreProfile::PROFILE_07, CoreProfile::PROFILE_11, CoreProfile::PROFILE_22,
    CoreProfile::PROFILE_4M, CoreProfile::PROFILE_44};
constexpr std::array<CoreDataIdMode, 2> kReportedDataIdModes{CoreDataIdMode::E2E_DATAID_BOTH,
                                                             CoreDataIdMode::E2E_DATAID_NIBBLE};

template <class Core, size_t N, class Record>
void MapIfReported(const std::array<Core, N>& reported, Core value, Record& out) {
    for (const Core candidate : reported) {
        if (candidate == value) {
            out = static_cast<Record>(static_cast<uint8_t>(value));
            return;
        }
    }
}

}  // namespace

orx::maintaind::E2EConfigInfo OrxMaintaindConfig::ChangeE2EInfoToTransportStruct(
    const std::shared_ptr<vorx::vcc::api::types::E2EXfConfig>& config) const {
    orx::maintaind::E2EConfigInfo out;
    if (!config) {
        return out;
    }
    const vorx::vcc::api::types::E2EXfConfig& in = *config;
    MapIfReported(kReportedProfiles, in.profile, out.profile);
    out.dataIdList = in.dataIdList;
    out.isE2EEnabled = in.isE2EEnabled;
    out.isDisableE2ECheck = in.isDisableE2ECheck;
    out.dataLength = in.dataLength;
    out.maxDataLength = in.maxDataLength;
    out.counterOffset = in.counterOffset;
    out.crcOffset = in.crcOffset;
    MapIfReported(kReportedDataIdModes, in.dataIdMode, out.dataIdMode);
    out.maxDeltaCounter = in.maxDeltaCounter;
    out.maxErrorStateInit = in.maxErrorStateInit;
    out.minOkStateInit = in.minOkStateInit;
    out.windowSizeInit = in.windowSizeInit;
    out.maxErrorStateValid = in.maxErrorStateValid;
    out.minOkStateValid = in.minOkStateValid;
    out.windowSizeValid = in.windowSizeValid;
    out.maxErrorStateInvalid = in.maxErrorStateInvalid;
    out.minOkStateInvalid = in.minOkStateInvalid;
    out.isCheckEnabled = in.isCheckEnabled;
    out.windowSizeInvalid = in.windowSizeInvalid;
    return out;
}

}  // namespace config
}  // namespace maintaind
}  // namespace orx
