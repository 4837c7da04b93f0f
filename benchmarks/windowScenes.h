#pragma once

#include <nlohmann/json.hpp>
#include <string>

/// What one child process of the window's benchmark shows and measures. `scene` is one of
///   full, empty, bare  milliseconds from the start of the process to its first frame, and resident memory;
///   ticks, counting  processor time of a second of a session, without and with the animation of the digits;
///   label            the same of a label over one cached picture;
///   hidden           frames drawn while the window is hidden, and processor time of such a second;
///   bareAndHidden    nothing: it shows the bare window, hides it and stays until the program is ended;
///   cards, list      milliseconds of a frame while 100,000 cards scroll by.
/// `rowHeight` is for "list", in pixels. Ends the program with a reason where something is not as it must be.
nlohmann::json showScene(const std::string &scene, double rowHeight);
