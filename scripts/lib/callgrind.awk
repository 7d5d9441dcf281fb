# Sums up a callgrind profile: `instructions OBJECT N` for what an object's own
# code ran, and `allocations OBJECT N` for its calls of operator new or malloc.
# OBJECT is a file name without its folder and version.

# A profile gives each name once, as `(12) name`, and its number from then on.
function resolve(kind, text,    number) {
  number = substr(text, 1, index(text, ")"))
  if (length(text) > length(number)) {
    names[kind, number] = substr(text, length(number) + 2)
  }
  return names[kind, number]
}

function object_name(text,    name) {
  name = resolve("object", text)
  sub(/.*\//, "", name)
  sub(/\.so.*/, "", name)
  return name
}

/^ob=/ { object = object_name(substr($0, 4)) }
/^fn=/ { resolve("function", substr($0, 4)) }
/^cob=/ { object_name(substr($0, 5)) }
/^cfn=/ { called = resolve("function", substr($0, 5)) }
/^calls=/ {
  if (called ~ /^(operator new\(|malloc|calloc|realloc)/) {
    split(substr($0, 7), calls, " ")
    allocations[object] += calls[1]
  }
  getline # what the callee cost
  next
}
/^[0-9+*-]/ { instructions[object] += $2 }

END {
  # Not by print, which may round what is above 2^31.
  for (name in instructions) {
    printf "instructions %s %.0f\n", name, instructions[name]
  }
  for (name in allocations) {
    printf "allocations %s %.0f\n", name, allocations[name]
  }
}
