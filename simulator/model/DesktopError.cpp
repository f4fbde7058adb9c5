#include "simulator/model/DesktopError.h"

namespace vantor::model {

const char* ErrorText(ErrorCode code) {
    switch (code) {
    case ErrorCode::InvalidArgument:
        return "0x0001: Invalid script argument";
    case ErrorCode::MissingArgument:
        return "0x0002: Missing script argument";
    case ErrorCode::NonNumericArgument:
        return "0x0005: Non numeric argument";
    case ErrorCode::UnsupportedArgumentType:
        return "0x0006: Unsupported argument type";
    case ErrorCode::WrongArrayRank:
        return "0x0007: The dimension of COM array does not equal to one";
    case ErrorCode::InvalidArrayAccess:
        return "0x0008: Invalid COM array access";
    case ErrorCode::InvalidConversion:
        return "0x0009: Invalid argument conversion";
    case ErrorCode::IncompleteArray:
        return "0x000A: Incomplete array argument";
    case ErrorCode::DesignNameCollision:
        return "0x000B: Design name collision, please choose a new name";
    case ErrorCode::UnsupportedDesignType:
        return "0x000C: Unsupported design type";
    case ErrorCode::ObjectDeleted:
        return "0x000D: The referenced object has been deleted";
    case ErrorCode::BadArgumentValue:
        return "0x0202: Bad argument value";
    case ErrorCode::ValidationFailed:
        return "0x0203: Argument validation failed";
    case ErrorCode::OutOfMemory:
        return "0x0204: Memory allocation failed";
    case ErrorCode::FileAccess:
        return "0x0205: Failed to get file access";
    case ErrorCode::WriteFile:
        return "0x0206: Failed to write file";
    case ErrorCode::ReadFile:
        return "0x0207: Failed to read file";
    case ErrorCode::InternalError:
        return "0x0209: Internal program error";
    case ErrorCode::CannotOpenProject:
        return "0x020B: Cannot open the project";
    case ErrorCode::NoActiveDesign:
        return "0x020C: No active design is opened";
    case ErrorCode::NotFound:
        return "0x020D: The project or design is not found";
    case ErrorCode::ProjectExists:
        return "0x020E: The project already exists";
    case ErrorCode::ModuleNotFound:
        return "0x0218: The module is not found";
    case ErrorCode::SolverData:
        return "0x0219: Error building solver data";
    case ErrorCode::SolutionError:
        return "0x021B: Solution error";
    case ErrorCode::ProjectNotSaved:
        return "0x0220: The project is not saved";
    case ErrorCode::SaveFailed:
        return "0x0221: The project failed to save";
    case ErrorCode::InvalidDirectory:
        return "0x0224: The directory is invalid";
    case ErrorCode::InvalidProjectName:
        return "0x0226: Invalid project name";
    case ErrorCode::UnsupportedOperation:
        return "0x0227: Unsupported operation";
    case ErrorCode::InvalidToolObject:
        return "0x0229: Invalid tool object name";
    case ErrorCode::NotPermitted:
        return "0x022A: The access is not permitted";
    case ErrorCode::InvalidDefinition:
        return "0x022E: Invalid definition";
    }
    return "0x0209: Internal program error";
}

} // namespace vantor::model
