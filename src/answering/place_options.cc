#include "answering/place_options.h"

#include <CLI/CLI.hpp>
#include <string>

namespace vek {

void add_place_options(CLI::App &app, KeptModel::Place &place) {
  app.add_option("-r,--resource", place.resource_file,
                 "resource file, as vek's -r")
      ->type_name("FILE");
  app.add_option("-d,--data", place.data_directory,
                 "data directory, as vek's -d")
      ->type_name("DIRECTORY");
  app.add_option_function<std::string>(
         "-a,--algorithm",
         [&place](const std::string &text) {
           if (text.size() == 1)
             place.algorithm = algorithm_of_letter(text[0]);
           if (!place.algorithm) {
             throw CLI::ValidationError(
                 "valid arguments to -a are W, R, S and L");
           }
         },
         "classifier: W, R, S or L")
      ->type_name("LETTER");
}

}  // namespace vek
