#pragma once

#include "tests/support/World.h"

#include <gtest/gtest.h>
#include <string>

namespace fake {

/// Compares the journal of a world with the transcript that is expected of it.
///
/// A transcript has one call after the other, in the notation of `Print`:
///
///     # what stands behind a number sign, to the end of the line, is a remark
///     editor.Move(
///         ["NAME:Selections", "Selections:=", "Magnet"],
///         ["NAME:TranslateParameters", "TranslateVectorX:=", "-1.000000Meter"])
///     editor.Rotate("X") -> fails       an invocation that failed
///     editor.FitAll -> unknown          a name that the object does not know
///     editor.FitAll -> known            a look-up without an invocation
///
/// Blanks and line ends outside of quotes do not matter; everything else does. What is told of a difference is the
/// first call that differs, with the calls around it, and of long calls only what is at the place:
///
///     call 3: expected editor.Rotate("X"), was editor.Rotate("Y")
///     around it:
///         2  editor.FitAll -> unknown
///       > 3  editor.Rotate("Y")
///         4  project.Save()
testing::AssertionResult MatchesTranscript(const char* worldText, const char* transcriptText, const World& world,
                                           const std::string& transcript);

/// The same for a journal that was kept as text.
testing::AssertionResult MatchesTranscript(const char* journalText, const char* transcriptText,
                                           const std::string& journal, const std::string& transcript);

/// The same for one VARIANT, for example the argument that a builder returns.
testing::AssertionResult MatchesTree(const char* variantText, const char* treeText, const VARIANT& variant,
                                     const std::string& tree);

} // namespace fake

#define EXPECT_TRANSCRIPT(world, transcript) EXPECT_PRED_FORMAT2(fake::MatchesTranscript, world, transcript)
#define EXPECT_TREE(variant, tree) EXPECT_PRED_FORMAT2(fake::MatchesTree, variant, tree)
