#include "tools/record/list_microphones.h"

#include <cstdio>

#include "platform/camera/microphone_finder.h"

namespace record {

int print_microphones() {
  bool answered = false;
  const std::vector<handset::FoundMicrophone> found = handset::find_microphones(&answered);
  if (!answered) {
    std::fputs("morvane-record: the sound server does not answer\n", stderr);
    return 1;
  }
  std::puts(found.empty() ? "No microphone was found." : "Microphones:");
  for (const handset::FoundMicrophone& microphone : found) {
    std::printf("  %s (%s)%s\n", microphone.label.c_str(), microphone.identity.c_str(),
                microphone.is_default ? ", default" : "");
  }
  return 0;
}

}  // namespace record
