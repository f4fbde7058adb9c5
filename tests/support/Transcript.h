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
/// Blanks and line ends outside of quotes do not matter; everything else does.
testing::AssertionResult MatchesTranscript(const char* worldText, const char* transcriptText, const World& world,
                                           const std::string& transcript);

/// The same for one VARIANT, for example the argument that a builder returns.
testing::AssertionResult MatchesTree(const char* variantText, const char* treeText, const VARIANT& variant,
                                     const std::string& tree);

} // namespace fake

#define EXPECT_TRANSCRIPT(world, transcript) EXPECT_PRED_FORMAT2(fake::MatchesTranscript, world, transcript)
#define EXPECT_TREE(variant, tree) EXPECT_PRED_FORMAT2(fake::MatchesTree, variant, tree)
