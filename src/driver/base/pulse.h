// What is collected in memory is written once a second, so that an end from outside costs a second of work at
// most.
#pragma once

/// Writes all that is collected, for all files and for the console. A loss may end the run.
void write_all_collected();

/// The same if a second has passed since the last time. Called around each read of the input, never per
/// packet.
void write_once_a_second();
