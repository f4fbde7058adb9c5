#include "comutils/LoadCommands.h"

#include "comutils/Names.h"

#include <algorithm>
#include <iterator>

namespace LoadCommands {

bool AssignForce(IDispatch* module, const std::string& body, const std::vector<std::string>& objects) {
    // clang-format off
    return Dispatch::Call(module, L"AssignForce",
        {{Names::Block(Names::Force(body)),
          "Reference CS:=", Names::ObjectFrame(body),
          "Is Virtual:=", true,
          "Objects:=", CListBuilder::OfTexts(objects)}});
    // clang-format on
}

bool AssignTorque(IDispatch* module, const std::string& body, const std::vector<std::string>& objects) {
    // Each axis is named by the letter that its ending carries.
    return std::all_of(std::begin(Names::axes), std::end(Names::axes), [&](const char* ending) {
        // clang-format off
        return Dispatch::Call(module, L"AssignTorque",
            {{Names::Block(Names::Torque(body) + ending),
              "Coordinate System:=", Names::ObjectFrame(body),
              "Is Virtual:=", true,
              "Is Positive:=", true,
              "Axis:=", ending + 1,
              "Objects:=", CListBuilder::OfTexts(objects)}});
        // clang-format on
    });
}

} // namespace LoadCommands
