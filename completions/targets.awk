# The ids, ports and projects of the rows in `corvane status --json`, one a line, each once. A small
# JSON reader, so that neither the layout of the text nor nested objects (a stop method may hold an
# "id") can fool it. Written without backslashes, so that it goes unchanged inside the single quotes of each shell.
BEGIN { bs = sprintf("%c", 92); dq = sprintf("%c", 34); blank = " " sprintf("%c%c%c", 9, 10, 13) }
function emit(word) { if (word != "" && !(word in seen)) { seen[word] = 1; print word } }
{
  rest = $0
  while (rest != "") {
    c = substr(rest, 1, 1)
    if (index(blank, c)) { rest = substr(rest, 2); continue }
    if (c == dq) {
      word = ""; i = 2
      while (i <= length(rest) && (d = substr(rest, i, 1)) != dq) {
        if (d == bs) { i++; d = substr(rest, i, 1) }
        word = word d; i++
      }
      rest = substr(rest, i + 1)
      if (wantKey) { if (path == "[{") key = word; wantKey = 0 }
      else if (path == "[{" && (key == "id" || key == "project")) emit(word)
      continue
    }
    if (c == "{" || c == "[") { path = path c; wantKey = c == "{"; rest = substr(rest, 2); continue }
    if (c == "}" || c == "]") { path = substr(path, 1, length(path) - 1); rest = substr(rest, 2); continue }
    if (c == ",") { wantKey = substr(path, length(path)) == "{"; rest = substr(rest, 2); continue }
    if (c == ":") { rest = substr(rest, 2); continue }
    if (!match(rest, /^[-+.0-9A-Za-z]+/)) exit
    if (path == "[{[" && key == "ports") emit(substr(rest, 1, RLENGTH))
    rest = substr(rest, RLENGTH + 1)
  }
}
