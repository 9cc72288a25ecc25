// The folders of a target directory: one for each class, and two that are for
// texts without one.
//
// The class a/b has the folder a/b. A name that means something else there is
// changed, so that no two classes share a folder: "unsure", "rejected" and the
// log's name, as a class, get a "_" behind them, and what begins with a full
// stop, one in front; so do names that look like the result.
#ifndef VEK_SORT_FOLDERS_H_
#define VEK_SORT_FOLDERS_H_

#include <string>
#include <string_view>

namespace vek::sorting {

// Below the target directory.
inline constexpr char unsure_folder[] = "unsure";
inline constexpr char rejected_folder[] = "rejected";
inline constexpr char log_name[] = "sorted.tsv";
inline constexpr char state_folder[] = ".vek-sort";
// What a text is called while it is copied: this and a number.
inline constexpr char temporary_prefix[] = ".vek-sort-";

std::string folder_of_class(std::string_view class_name);
// The way back. Empty for a folder that is of no class.
std::string class_of_folder(std::string_view folder);

// The `number`th choice for the name of a text in a folder, from 1, which is
// the name itself: "x.txt", "x-2.txt", "x-3.txt". It fits into a directory.
std::string choice_of_name(std::string_view name, unsigned number);

// "b" of "a/b".
std::string_view last_part(std::string_view path);
// "a" of "a/b", "." of "b".
std::string directory_of(std::string_view path);

}  // namespace vek::sorting

#endif  // VEK_SORT_FOLDERS_H_
