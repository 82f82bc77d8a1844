#pragma once
// What the main window's commands do, handed in by whoever assembles the program. The window
// only asks; loading, saving, playing and the Ending belong to the application object. A
// command left empty is one this build does not have, and its menu item is disabled.

#include <array>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace halvo {

struct ShellCommands {
    std::function<void(const std::string& file)> loadConfiguration;
    std::function<void(const std::string& file)> saveConfiguration;
    // The Ending, with or without saving the active defaults file first.
    std::function<void(bool save)> ending;

    std::function<std::vector<std::string>()> recentFiles;
    std::function<void(const std::string& file)> addRecentFile;

    // A data file to play, dropped on the window or chosen from the recent files.
    std::function<void(const std::string& file)> playFile;
    std::function<void()> changePause;
    std::function<void()> playbackSlower;
    std::function<void()> playbackFaster;

    // The update noticed new sonar settings, or new channels on displays 0-3.
    std::function<void()> sonarSettingsChanged;
    std::function<void(const std::array<int, 4>& channels)> channelsChanged;

    // The display documents' splitter sizes, for the window placement code.
    std::function<void(std::span<const int> rows, std::span<const int> columns)> applySplitSizes;
    std::function<void(std::vector<int>& rows, std::vector<int>& columns)> collectSplitSizes;
};

}  // namespace halvo
