# Prints the Debian changelog that CHANGELOG.md corresponds to:
#
#   awk -v version=14.5.12.1 -f packaging/changelog.awk CHANGELOG.md
#
# "## 14.5.12.1 - 2026-11-21" is a release. "## Unreleased" makes an entry if it has items:
# with the next release's version, and the day of the build or of SOURCE_DATE_EPOCH.

# Prints the section that was read, if it has items.
function print_entry(distribution, date, command) {
  if (items == "") return
  distribution = name == "Unreleased" ? "UNRELEASED" : "unstable"
  if (day == "") day = ENVIRON["SOURCE_DATE_EPOCH"] != "" ? "@" ENVIRON["SOURCE_DATE_EPOCH"] : "0:00"
  command = "date -u -R -d " day
  command | getline date
  close(command)
  entries[++count] = items "\n -- The authors of vrkt_wlan_udi_log_decode" \
    " <udi-log-decode@vrkt.example>  " date "\n"
  names[count] = name
  distributions[count] = distribution
  items = ""
}

/^## / {
  print_entry()
  name = $2
  day = $4
  released[name] = 1
  if (name != "Unreleased" && ($0 !~ /^## [0-9.]+(-[0-9]+)? - [0-9]+-[0-9]+-[0-9]+$/)) {
    print "CHANGELOG.md: neither Unreleased nor a version and a day: " $0 >"/dev/stderr"
    failed = 1
    exit 1
  }
  next
}
name == "" || $0 == "" { next }
/^### / { items = items (items == "" ? "" : "\n") "  [ " $2 " ]\n"; next }
{ sub(/^- /, "* "); items = items "  " $0 "\n" }

END {
  if (failed) exit 1
  print_entry()
  next_version = version
  for (number = 2; next_version in released; ++number) next_version = version "-" number
  for (i = 1; i <= count; ++i) {
    if (i > 1) print ""
    print "vrkt-wlan-udi-log-decode (" (names[i] == "Unreleased" ? next_version : names[i]) ") " \
      distributions[i] "; urgency=medium\n"
    printf "%s", entries[i]
  }
}
