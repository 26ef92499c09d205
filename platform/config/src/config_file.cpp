// Loading orx.json: reading the bytes and parsing them, with one log line per problem.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "ara/kelda/common/orxConfigParser/config_reader.h"
#include "config_log.h"
#include "key_check.h"

namespace ara::kelda::common::orxConfigParser {
namespace {

// Far above any real configuration; protects against reading a wrong, huge file.
constexpr off_t kMaxFileSize = 16 * 1024 * 1024;

enum class ReadResult { kOk, kMissing, kFailed };

ReadResult ReadWholeFile(const std::string& path, std::string* content, std::string* error) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        if (errno == ENOENT || errno == ENOTDIR) {
            return ReadResult::kMissing;
        }
        *error = std::strerror(errno);
        return ReadResult::kFailed;
    }
    ReadResult result = ReadResult::kOk;
    struct stat info {};
    if (::fstat(fd, &info) != 0) {
        *error = std::strerror(errno);
        result = ReadResult::kFailed;
    } else if (!S_ISREG(info.st_mode)) {
        *error = "not a regular file";
        result = ReadResult::kFailed;
    } else if (info.st_size > kMaxFileSize) {
        *error = "file larger than " + std::to_string(kMaxFileSize) + " bytes";
        result = ReadResult::kFailed;
    } else {
        content->resize(static_cast<size_t>(info.st_size));
        size_t done = 0;
        while (done < content->size()) {
            const ssize_t got = ::read(fd, content->data() + done, content->size() - done);
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got < 0) {
                *error = std::strerror(errno);
                result = ReadResult::kFailed;
                break;
            }
            if (got == 0) {
                content->resize(done);  // the file shrank while we read it
                break;
            }
            done += static_cast<size_t>(got);
        }
    }
    ::close(fd);
    return result;
}

// Line and column (both from 1) of the byte at `offset` (0-based).
std::pair<size_t, size_t> LineAndColumn(const std::string& content, size_t offset) {
    offset = std::min(offset, content.size());
    size_t line = 1;
    size_t lineStart = 0;
    for (size_t i = 0; i < offset; ++i) {
        if (content[i] == '\n') {
            ++line;
            lineStart = i + 1;
        }
    }
    return {line, offset - lineStart + 1};
}

// The parser's explanation without its own position prefix.
std::string ParseReason(const std::string& what) {
    const auto syntax = what.find("syntax error");
    return syntax == std::string::npos ? what : what.substr(syntax);
}

}  // namespace

nlohmann::json LoadConfigDocument(const std::string& filePath, ConfigProblems* problems,
                                  bool warnKeys) {
    auto log = detail::ConfigLog();
    // Writes the line of a problem that makes the whole file unusable, and keeps it.
    const auto refuse = [&](const std::string& reason, const std::string& line) {
        log->LogError() << line;
        if (problems != nullptr) {
            problems->Add({SettingOrigin::File(filePath, ""), "", reason}, line);
        }
        return nlohmann::json::object();
    };
    try {
        std::string content;
        std::string error;
        switch (ReadWholeFile(filePath, &content, &error)) {
            case ReadResult::kMissing:
                log->LogDebug() << "[OrxConfigParser][No config file, nothing configured][file="
                                << filePath << "]";
                return nlohmann::json::object();
            case ReadResult::kFailed:
                return refuse("cannot be read: " + error,
                              "[OrxConfigParser][Cannot read config file, treated as not "
                              "configured][file=" +
                                  filePath + ", reason=" + error + "]");
            case ReadResult::kOk:
                break;
        }
        nlohmann::json document;
        try {
            document = nlohmann::json::parse(content);
        } catch (const nlohmann::json::parse_error& e) {
            // e.byte counts from 1 and points at the byte where parsing failed.
            const auto [line, column] = LineAndColumn(content, e.byte == 0 ? 0 : e.byte - 1);
            const std::string where =
                "line=" + std::to_string(line) + ", column=" + std::to_string(column);
            return refuse("not valid JSON at " + where + ": " + ParseReason(e.what()),
                          "[OrxConfigParser][Config file is not valid JSON, treated as not "
                          "configured][file=" +
                              filePath + ", " + where + ", reason=" + ParseReason(e.what()) + "]");
        }
        if (!document.is_object()) {
            return refuse(std::string("must hold a JSON object, not ") + document.type_name(),
                          "[OrxConfigParser][Config file does not hold a JSON object, treated as "
                          "not configured][file=" +
                              filePath + ", found=" + document.type_name() + "]");
        }
        if (warnKeys) {
            detail::WarnDuplicateKeys(content, filePath);
            detail::WarnUnknownKeys(document, filePath);
        }
        return document;
    } catch (const std::exception& e) {
        // Anything else (numbers the parser cannot hold, memory) makes the file unusable too.
        return refuse(
            std::string("cannot be loaded: ") + e.what(),
            "[OrxConfigParser][Cannot load config file, treated as not configured][file=" +
                filePath + ", reason=" + e.what() + "]");
    } catch (...) {
        return refuse(
            "cannot be loaded",
            "[OrxConfigParser][Cannot load config file, treated as not configured][file=" +
                filePath + "]");
    }
}

}  // namespace ara::kelda::common::orxConfigParser
