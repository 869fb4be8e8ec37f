#include <cstdio>

#include "platform/camera/camera_config.h"
#include "tools/record/list.h"
#include "tools/record/options.h"
#include "tools/record/session.h"

namespace {

int run(int argc, char** argv) {
  record::Options options;
  const std::string complaint = record::parse_options(argc, argv, &options);
  if (!complaint.empty()) {
    std::fprintf(stderr, "morvane-record: %s (see --help)\n", complaint.c_str());
    return 1;
  }
  if (options.action == record::Options::Action::help) {
    std::fputs(record::help_text(), stdout);
    return 0;
  }
  if (options.action == record::Options::Action::version) {
    std::puts("morvane-record " MORVANE_VERSION);
    return 0;
  }
  if (options.action == record::Options::Action::list) return record::print_list();
  record::block_signals();
  return record::run_session(options);
}

}  // namespace

int main(int argc, char** argv) {
  handset::keep_heap_small();
  handset::end_process(run(argc, argv));
}
