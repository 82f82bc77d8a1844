#include "status/StatusCustomPresets.h"

#include "app/IniFile.h"
#include "app/Profile.h"

namespace halvo {

namespace {

int ReadInt(std::string_view file, std::string_view section, std::string_view key, int def) {
    std::int32_t v = def;
    const std::string text = Profile::ReadString(file, section, key, "", IniFile::kValueChars);
    if (!IniFile::ParseInt(text, v)) return def;
    return v;
}

}  // namespace

void StatusCustomPreset::ApplyTo(CustomField& target) const {
    target.channel = channel;
    target.description = CutToBuffer(description, CustomField::kDescriptionBytes);
    target.label = CutToBuffer(format, CustomField::kLabelBytes);
    target.field = field;
}

std::vector<StatusCustomPreset> ReadStatusCustomPresets(std::string_view file) {
    std::vector<StatusCustomPreset> presets;
    for (const std::string& section : Profile::SectionNames(file)) {
        StatusCustomPreset p;
        p.name = section;
        p.channel = ReadInt(file, section, "Channel", -1);
        p.description = CutToBuffer(
            Profile::ReadString(file, section, "Description", "", CustomField::kDescriptionBytes),
            CustomField::kDescriptionBytes);
        p.format =
            CutToBuffer(Profile::ReadString(file, section, "Format", "", CustomField::kLabelBytes),
                        CustomField::kLabelBytes);
        p.field = ReadInt(file, section, "Field", 0);
        presets.push_back(std::move(p));
    }
    return presets;
}

}  // namespace halvo
