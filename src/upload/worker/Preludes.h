#pragma once

/// The JavaScript of the worker itself, from the folder prelude/, compiled in.
namespace tavrine {

extern const char *const worldPrelude;
extern const char *const urlPrelude;

} // namespace tavrine
