-- What both Lua 5.2 and Lua 5.4 have, and what Wireshark gives its plugins.
std = "min"
max_line_length = 100
read_globals = {
  "Address", "ByteArray", "Dissector", "DissectorTable", "NSTime", "Pref", "Proto",
  "ProtoExpert", "ProtoField", "TreeItem", "UInt64",
  "base", "expert", "frametype", "register_filehandler",
  "wtap_encaps", "wtap_presence_flags", "wtap_rec_types", "wtap_tsprecs", "FileHandler",
  table = {fields = {"unpack"}},
}
