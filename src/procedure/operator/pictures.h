// Pictures of the unit under test: PIC shows one with lines of text beside it, PICE asks for a judgement as well, and
// DRAW says where the next one stands.
//
//   PIC  front view.bmp                            the first record names the picture's file,
//   PIC  Connect the leads as shown.               further ones are the lines of text beside it
//   PIC  front.bmp Connect the leads as shown.     a text behind the name is the first line
//
// The first record is the name as a whole where such a file is there; otherwise the name is its first word, in double
// quotes if there are blanks in it. The file is looked for in the folder of the key "picdir".
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/operator.h"
#include "state/statement.h"

namespace orvane {

/// The file that the text of a statement's first record names; `rest` takes what stands behind the name. Empty if the
/// text is empty.
std::string picture_file(std::string_view text, std::string_view& rest);

/// The file that a PIC or PICE record names, for the check in front of a run. Empty if it names none: a further record
/// of the statement, or a name that is made of elements and known only when it runs.
std::string picture_of(const FscRecord& record);

/// Where DRAW has put the next picture, and its title "UUT Front View" where DRAW has named a view.
std::optional<PictureFrame> picture_frame(const DrawSettings& draw);
std::string picture_title(const DrawSettings& draw);

/// Fills lines and picture of a window from the statement's records. False after a report.
[[nodiscard]] bool picture_window(Statement& statement, LinesWindow& window);

bool run_draw(Statement& statement);
bool run_pic(Statement& statement);

}  // namespace orvane
