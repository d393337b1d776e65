#!/usr/bin/env bash
# Plays whole games under a real GUI: xboard in a virtual display, with polyglot as its UCI side.
#
#   scripts/gui_match.sh [-n GAMES] [-t MIN:SEC] [-i INC] [-o PGN] ENGINE OPPONENT
#
# ENGINE is a UCI program. OPPONENT is gnuchess or phalanx (which speak to xboard directly),
# glaurung, toga2, stockfish or the path of another UCI program. Prints the score and counts illegal
# moves, time forfeits and crashes of either side; the exit status is 1 if ENGINE had any, or if a
# game is missing. Polyglot drops fractions of a second from increments, but not from clock times.
# Needs the Debian packages xboard, polyglot, xvfb and xauth, and the opponent's.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
games=20 time=0:10 increment=0.2 pgn=
while getopts n:t:i:o: option; do
  case $option in
    n) games=$OPTARG ;;
    t) time=$OPTARG ;;
    i) increment=$OPTARG ;;
    o) pgn=$OPTARG ;;
    *) exit 2 ;;
  esac
done
shift $((OPTIND - 1))
[ $# -eq 2 ] || { sed -n '2,9s/^# \{0,1\}//p' "$0" >&2; exit 2; }

PATH=$PATH:/usr/games
for program in xboard polyglot xvfb-run; do
  command -v "$program" > /dev/null || { echo "$program is not installed" >&2; exit 2; }
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work
pgn=${pgn:-$work/games.pgn}
touch "$pgn"
pgn=$(realpath "$pgn")
before=$(grep -c '^\[Result ' "$pgn" || true)

# xboard_command NAME PROGRAM: how xboard starts the program; writes its polyglot file.
xboard_command() {
  local name=$1 program=$2
  case $(basename "$program") in
    gnuchess) echo "$program --xboard" && return ;;
    phalanx) echo "$program" && return ;;
  esac
  mkdir -p "$work/$name"
  cat > "$work/$name.ini" << INI
[PolyGlot]
EngineName = $name
EngineDir = $work/$name
EngineCommand = $program
Book = false
Resign = false
Log = true
LogFile = $work/$name.log
[Engine]
Hash = 32
INI
  echo "polyglot $work/$name.ini"
}

path_of() { if [ -e "$1" ]; then realpath "$1"; else command -v "$1"; fi; }
engine=$(path_of "$1") || { echo "$1: not found" >&2; exit 2; }
opponent=$(path_of "$2") || { echo "$2: not found" >&2; exit 2; }
engine_name=$(basename "$engine")
opponent_name=$(basename "$opponent")
if [ "$engine_name" = "$opponent_name" ]; then opponent_name=$opponent_name-2; fi

# Each opening serves two games with colours changed.
python3 "$here/../tools/gui_match_files.py" openings > "$work/openings.pgn"

set +e
timeout $((games * 1200)) xvfb-run -a xboard \
  -fcp "$(xboard_command "$engine_name" "$engine")" -fn "$engine_name" \
  -scp "$(xboard_command "$opponent_name" "$opponent")" -sn "$opponent_name" \
  -mg "$games" -tc "$time" -inc "$increment" -lgf "$work/openings.pgn" -lgi -2 \
  -sgf "$pgn" -noGUI -testLegality true -repeatsToDraw 3 -ruleMoves 50 \
  -popupExitMessage false -popupMoveErrors false > "$work/xboard.out" 2>&1 < /dev/null
status=$?
set -e
if [ $status -ne 0 ]; then
  echo "xboard ended with status $status" >&2
  tail -n 20 "$work/xboard.out" >&2
fi

python3 "$here/../tools/gui_match_files.py" report "$pgn" "$engine_name" "$opponent_name" \
  --skip "$before" --games "$games"
