#pragma once

#include "coupling/KinoraVeltrixCoupling.h"

#include <filesystem>
#include <string>
#include <vector>

/// A coupling object with a project of the bench desktop open, somewhere in a run.
class Session {
public:
    /// @param recordedSteps  length of the history that a step finds
    /// @param reports        the desktop option, "Never" or another
    Session(int bodies, std::size_t recordedSteps, const std::string& reports);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// One step. The history has the same length before each.
    void Step();
    /// Writes the history, as a step does.
    void WriteHistory();
    /// Appends to each file what a step appends to it, and nothing else: one open, write and close of the system.
    void AppendToFiles() const;

private:
    struct File {
        std::filesystem::path path;
        std::string line;
    };

    void CollectFiles();

    std::filesystem::path m_folder;
    CKinoraVeltrixCoupling m_coupling;
    std::vector<IKinoraVeltrixInterface::Transform> m_transforms;
    std::vector<IKinoraVeltrixInterface::Result> m_results;
    std::vector<File> m_files;
};
