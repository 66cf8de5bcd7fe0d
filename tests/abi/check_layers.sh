#!/bin/sh
# Holds the layers of src/: an include names the folder of its header, and a file includes its own
# layer, the layers that it rests on, and the public headers of these.
# usage: check_layers.sh SOURCE_DIR
set -eu
cd "$1/src"
grep -rnE '^#include "' --include='*.hpp' --include='*.cpp' --include='*.yy' --include='*.ll' . |
awk '
  BEGIN {
    rests["foundation"] = "foundation"
    rests["types"] = "foundation types"
    rests["values"] = "foundation types values"
    rests["language"] = "foundation types values language"
    rests["colour"] = "foundation types values colour"
    rests["platform"] = "platform"
    rests["scene"] = "foundation platform scene"
    rests["embed"] = "foundation types values language colour embed"

    split("api.h errors.h result.hpp unique_id.hpp version.h detail/raise_error.hpp detail/wrong_kind.hpp", f, " ")
    split("types.h metadata.h type_library.hpp", t, " ")
    split("values.h value.hpp container_copy.hpp detail/fitting.hpp", v, " ")
    split("colour.h parameters.h", c, " ")
    for (i in f) public[f[i]] = "foundation"
    for (i in t) public[t[i]] = "types"
    for (i in v) public[v[i]] = "values"
    for (i in c) public[c[i]] = "colour"
    # Made by flex and bison, or of the small library beside src/.
    generated["grammar.hpp"] = generated["location.hh"] = generated["image_format.hpp"] = 1
  }
  {
    split($0, part, ":"); split(part[1], path, "/"); split($0, quoted, "\"")
    layer = path[2]; header = quoted[2]; split(header, folder, "/")
    if (header in generated) next
    if (folder[1] == "vornath_data") {
      name = substr(header, length("vornath_data/") + 1)
      above = (name in public) ? public[name] : "scene"
      # The scene layer reaches types and values as a host does.
      if (layer == "scene" && name !~ /^host/) next
    } else {
      above = folder[1]
    }
    if (index(" " rests[layer] " ", " " above " ") == 0) {
      print "src/" substr(part[1], 3) ":" part[2] ": " layer "/ does not rest on " header; bad = 1
    }
    seen++
  }
  END { if (!seen) print "no include seen"; exit bad || !seen }'
echo "src/ keeps its layers"
