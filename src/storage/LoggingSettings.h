#pragma once
// The keys of section Logging: the operator's two comment lines, the per-file log switch and the
// flags that choose which messages the event log records.

#include <cstdint>
#include <string>

namespace halvo {

class IniFile;

struct LoggingSettings {
    // Flags bits, with the labels of the logs page.
    static constexpr std::int32_t kDataSock = 0x01;   // "DataSock": data-stream lines at all
    static constexpr std::int32_t kCmdSock = 0x02;    // "CmdSock": command-stream lines at all
    static constexpr std::int32_t kVerbose = 0x04;    // "Verbose": a second line of fields
    static constexpr std::int32_t kPressure = 0x08;   // "Pressure": 2060
    static constexpr std::int32_t kPitchRoll = 0x10;  // "PitchRoll": 2020
    static constexpr std::int32_t kSonarMsg = 0x20;   // "SonarMsg": 80 and 82
    static constexpr std::int32_t kLowADC = 0x40;     // "LowADC": 2040
    static constexpr std::int32_t kNmea = 0x80;       // "NMEA": 2002
    static constexpr std::int32_t kSerial = 0x100;    // "Serial": 2000

    static constexpr std::size_t kMaxCommentBytes = 69;

    std::string commentLine1;           // CommentLine1
    std::string commentLine2;           // CommentLine2
    std::int32_t enablePerFileLog = 0;  // EnablePerFileLog
    std::int32_t flags = 0;             // Flags

    bool PerFileLog() const { return enablePerFileLog != 0; }
    bool CommentsBlank() const { return commentLine1.empty() && commentLine2.empty(); }
    // Cuts both comments to kMaxCommentBytes.
    void Clip();

    static LoggingSettings Load(IniFile& ini);
    void Save(IniFile& ini) const;

    friend bool operator==(const LoggingSettings&, const LoggingSettings&) = default;
};

}  // namespace halvo
