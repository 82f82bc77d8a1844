#include "halvo-hsf/RecordJson.h"

#include <cmath>

#include "core/ByteOrder.h"
#include "core/MessageTypes.h"
#include "core/TraceHeader.h"
#include "storage/StorageState.h"

namespace halvo::hsf {

std::string TraceKey(std::size_t fieldIndex) {
    const TraceFieldInfo& info = AllTraceFields()[fieldIndex];
    if (static_cast<TraceField>(fieldIndex) == TraceField::Reserved3A_2) {
        return std::string(kSecondReserved3A);
    }
    return std::string(info.name);
}

Json TraceJson(std::span<const std::uint8_t> header) {
    Json j = Json::object();
    const ConstTraceHeaderView view(header);
    const auto fields = AllTraceFields();
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const TraceFieldInfo& info = fields[i];
        const auto f = static_cast<TraceField>(i);
        switch (info.kind) {
            case FieldKind::Int16:
            case FieldKind::Int32:
                j[TraceKey(i)] = view.GetInt(f);
                break;
            case FieldKind::Flt32: {
                const float v = view.GetFloat(f);
                if (std::isfinite(v)) {
                    j[TraceKey(i)] = v;
                } else {
                    j[TraceKey(i)] = nullptr;
                }
                break;
            }
            case FieldKind::Chars2: {
                // Each byte as the character of that code, so any byte stays printable JSON.
                std::string text;
                for (int k = 0; k < 2; ++k) {
                    const auto c = GetLE<std::uint8_t>(header, info.offset + k);
                    if (c < 0x80) {
                        text += static_cast<char>(c);
                    } else {
                        text += static_cast<char>(0xC0 | (c >> 6));
                        text += static_cast<char>(0x80 | (c & 0x3F));
                    }
                }
                j[TraceKey(i)] = text;
                break;
            }
        }
    }
    return j;
}

bool SamplesJson(const SonarMessage& message, Json& out) {
    const auto payload = message.Payload();
    std::size_t headerBytes = 0;
    int word = 0;
    if (message.type() == MsgTrace) {
        headerBytes = kTraceHeaderSize;
        word = GetLE<std::uint16_t>(payload, 34);
    } else if (message.type() == MsgSideScanTrace) {
        headerBytes = 80;
        word = GetLE<std::uint16_t>(payload, 36);
    } else {
        return false;
    }
    if ((word >> 8) != 0 || payload.size() < headerBytes) return false;
    const int format = word & 0xFF;
    const DataFormatInfo info = DataFormatOf(format);
    const auto samples = payload.subspan(headerBytes);
    const std::size_t width = static_cast<std::size_t>(info.bytesPerValue);
    const std::size_t count = samples.size() / width;
    out = Json::array();
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t* p = samples.data() + i * width;
        if (info.isFloat) {
            const float v = LoadLE<float>(p);
            if (std::isfinite(v)) {
                out.push_back(v);
            } else {
                out.push_back(nullptr);
            }
        } else if (format == 0) {
            out.push_back(LoadLE<std::uint16_t>(p));  // envelope: a magnitude
        } else {
            out.push_back(LoadLE<std::int16_t>(p));
        }
    }
    return true;
}

std::string_view StateWord(ReadStatus status) {
    return StorageStateWord(status == ReadStatus::EndOfFile ? StateEndOfFile : StateError);
}

std::string Line(const Json& j) {
    return j.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace halvo::hsf
