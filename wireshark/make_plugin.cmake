# Puts the plugin together in the current directory: vocabulary.lua, and then the parts PARTS from
# the directory SOURCE. Each part is a chunk of its own, so that Lua reports an error with the
# file and line of the part. It is called with the vocabulary and the table `parts`, which has the
# results of the parts before it by their names.
file(READ vocabulary.lua vocabulary)
set(plugin "\
-- Opens UDI logs in Wireshark and tshark, and shows each signal with its fields.
-- Made of the tool's vocabulary and of the files that are named below.

-- A copy in the plugin folder and one on the command line may both be loaded.
-- Wireshark allows each protocol only once.
if pcall(Dissector.get, \"udi\") and Dissector.get(\"udi\") then return end

${vocabulary}
local parts = {}
")
string(REPLACE " " ";" parts "${PARTS}")
foreach(part IN LISTS parts)
  file(READ "${SOURCE}/${part}.lua" text)
  # In Lua, this string has no escape sequences, and its lines are those of the part.
  string(APPEND plugin "
parts.${part} = assert(load([==[\n${text}]==], '@wireshark/${part}.lua'))(vocabulary, parts)
")
endforeach()
file(WRITE udi.lua "${plugin}")
