# The two passes over a running log (the file is given twice): of a repeated test the first and the last run stay, a run
# that was cancelled goes, and a failed run is marked in both its lines.
function letter(line) { return substr(line, 10, 1) }
NR == FNR {
  if (skip) { skip = 0; next }
  l = letter($0)
  if (l == "C" || l == "L") next
  t = substr($0, 1, 8)
  if (l == "c") { d[t]--; next }
  st[t, ++d[t]] = FNR; skip = 1; next
}
FNR == 1 { for (t in d) if (d[t] > 0) { keep[st[t, 1]] = 1; keep[st[t, d[t]]] = 1 } }
pr {
  if (substr($0, 85, 4) == "FAIL") first = substr(first, 1, 84) "FAIL" substr(first, 89)
  print first; print; pr = 0; next
}
letter($0) == "C" || letter($0) == "L" { print; next }
FNR in keep { first = $0; pr = 1 }
