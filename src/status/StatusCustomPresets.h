#pragma once
// Ready-made custom field definitions from "./StatusCustom.ini": one section per definition,
// named as the field editor lists it. The program only reads this file.

#include <string>
#include <string_view>
#include <vector>

#include "status/StatusSettings.h"

namespace halvo {

inline constexpr std::string_view kStatusCustomFile = "./StatusCustom.ini";

struct StatusCustomPreset {
    std::string name;  // the section name
    int channel = -1;
    std::string description;
    std::string format;  // goes to the label
    int field = 0;

    // Copies the definition into a field, keeping its enable.
    void ApplyTo(CustomField& target) const;
};

// Every section in file order; empty when the file is missing.
std::vector<StatusCustomPreset> ReadStatusCustomPresets(std::string_view file = kStatusCustomFile);

}  // namespace halvo
