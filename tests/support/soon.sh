# shellcheck shell=bash
# Sourced by tests. soon COMMAND...: waits ten seconds for it to succeed.
soon() {
  for _ in $(seq 100); do "$@" && return || sleep 0.1; done
  return 1
}
