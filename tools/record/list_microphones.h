#pragma once

namespace record {

/// Prints the microphones that there are to the standard output, one a line: label, identity, and whether it is the
/// default one. Takes up to two seconds.
/// @return exit status: 1 when the sound server does not answer
int print_microphones();

}  // namespace record
