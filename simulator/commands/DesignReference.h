#pragma once

#include "simulator/model/Desktop.h"

#include <memory>

namespace vantor::commands {

using ProjectPointer = std::shared_ptr<model::Project>;

/// A design together with the project that it stands in.
struct DesignReference {
    ProjectPointer project;
    std::shared_ptr<model::Design> design;
};

} // namespace vantor::commands
