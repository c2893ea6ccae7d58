/// The folders that rendered pictures go to.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace render {

/// Makes the folders for `pictures` pictures each. A folder that holds pictures which would stay, and so be
/// taken for pictures of the same camera, is a std::invalid_argument, unless `overwrite`: then pictures of an
/// earlier run, which their names tell, are removed. Those that only have to be written over need no
/// permission where a truth.json shows that they were rendered. Folders of further cameras, of which there
/// will be no pictures, count as any that hold other pictures, but are not made. Nothing is removed unless
/// all folders can be used. What is removed, replaced or left is told in whole lines.
std::string PrepareFolders(const std::vector<std::filesystem::path>& folders, int pictures, bool overwrite,
                           const std::vector<std::filesystem::path>& further = {});

}  // namespace render
