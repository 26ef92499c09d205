#include "vorx/driver/dds/dds_status.h"

#include <dds/dds.h>

namespace vorx {
namespace driver {
namespace dds {

namespace {

struct CodeName {
    DdsErrc code;
    const char* cycloneName;
};

CodeName Lookup(int32_t returnCode) {
    switch (returnCode) {
        case DDS_RETCODE_ERROR:
            return {DdsErrc::kError, "DDS_RETCODE_ERROR"};
        case DDS_RETCODE_UNSUPPORTED:
            return {DdsErrc::kUnsupported, "DDS_RETCODE_UNSUPPORTED"};
        case DDS_RETCODE_BAD_PARAMETER:
            return {DdsErrc::kBadParameter, "DDS_RETCODE_BAD_PARAMETER"};
        case DDS_RETCODE_PRECONDITION_NOT_MET:
            return {DdsErrc::kPreconditionNotMet, "DDS_RETCODE_PRECONDITION_NOT_MET"};
        case DDS_RETCODE_OUT_OF_RESOURCES:
            return {DdsErrc::kOutOfResources, "DDS_RETCODE_OUT_OF_RESOURCES"};
        case DDS_RETCODE_NOT_ENABLED:
            return {DdsErrc::kNotEnabled, "DDS_RETCODE_NOT_ENABLED"};
        case DDS_RETCODE_IMMUTABLE_POLICY:
            return {DdsErrc::kInconsistentPolicy, "DDS_RETCODE_IMMUTABLE_POLICY"};
        case DDS_RETCODE_INCONSISTENT_POLICY:
            return {DdsErrc::kInconsistentPolicy, "DDS_RETCODE_INCONSISTENT_POLICY"};
        case DDS_RETCODE_ALREADY_DELETED:
            return {DdsErrc::kAlreadyDeleted, "DDS_RETCODE_ALREADY_DELETED"};
        case DDS_RETCODE_TIMEOUT:
            return {DdsErrc::kTimeout, "DDS_RETCODE_TIMEOUT"};
        case DDS_RETCODE_NO_DATA:
            return {DdsErrc::kNoData, "DDS_RETCODE_NO_DATA"};
        case DDS_RETCODE_ILLEGAL_OPERATION:
            return {DdsErrc::kIllegalOperation, "DDS_RETCODE_ILLEGAL_OPERATION"};
        case DDS_RETCODE_NOT_ALLOWED_BY_SECURITY:
            return {DdsErrc::kNotAllowedBySecurity, "DDS_RETCODE_NOT_ALLOWED_BY_SECURITY"};
        case DDS_RETCODE_TRY_AGAIN:
            return {DdsErrc::kOutOfResources, "DDS_RETCODE_TRY_AGAIN"};
        case DDS_RETCODE_NOT_ENOUGH_SPACE:
            return {DdsErrc::kOutOfResources, "DDS_RETCODE_NOT_ENOUGH_SPACE"};
        case DDS_RETCODE_OUT_OF_RANGE:
            return {DdsErrc::kBadParameter, "DDS_RETCODE_OUT_OF_RANGE"};
        case DDS_RETCODE_NOT_FOUND:
            return {DdsErrc::kBadParameter, "DDS_RETCODE_NOT_FOUND"};
        case DDS_RETCODE_NO_NETWORK:
            return {DdsErrc::kError, "DDS_RETCODE_NO_NETWORK"};
        default:
            return {DdsErrc::kUnknown, "DDS_RETCODE_UNKNOWN"};
    }
}

}  // namespace

const char* DdsErrcName(DdsErrc code) {
    switch (code) {
        case DdsErrc::kOk:
            return "kOk";
        case DdsErrc::kError:
            return "kError";
        case DdsErrc::kUnsupported:
            return "kUnsupported";
        case DdsErrc::kBadParameter:
            return "kBadParameter";
        case DdsErrc::kPreconditionNotMet:
            return "kPreconditionNotMet";
        case DdsErrc::kOutOfResources:
            return "kOutOfResources";
        case DdsErrc::kNotEnabled:
            return "kNotEnabled";
        case DdsErrc::kInconsistentPolicy:
            return "kInconsistentPolicy";
        case DdsErrc::kAlreadyDeleted:
            return "kAlreadyDeleted";
        case DdsErrc::kTimeout:
            return "kTimeout";
        case DdsErrc::kNoData:
            return "kNoData";
        case DdsErrc::kIllegalOperation:
            return "kIllegalOperation";
        case DdsErrc::kNotAllowedBySecurity:
            return "kNotAllowedBySecurity";
        case DdsErrc::kNoPeer:
            return "kNoPeer";
        case DdsErrc::kNotReady:
            return "kNotReady";
        case DdsErrc::kUnknown:
            return "kUnknown";
    }
    return "kUnknown";
}

DdsErrc TranslateReturnCodeValue(int32_t returnCode) {
    if (returnCode >= 0) {
        return DdsErrc::kOk;
    }
    return Lookup(returnCode).code;
}

DdsStatus TranslateReturnCode(int32_t returnCode, const std::string& what) {
    if (returnCode >= 0) {
        return DdsStatus::Ok();
    }
    const CodeName found = Lookup(returnCode);
    std::string message = what;
    message += ": ";
    message += found.cycloneName;
    if (found.code == DdsErrc::kUnknown) {
        message += " ";
        message += std::to_string(returnCode);
    }
    message += " (";
    message += dds_strretcode(returnCode);
    message += ")";
    return DdsStatus(found.code, std::move(message));
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
