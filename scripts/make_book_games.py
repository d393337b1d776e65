#!/usr/bin/env python3
"""The game collection of the default book: makes it and verifies what goes into it.

  scripts/make_book_games.py lines
      Verifies data/openings.txt: legal moves, eight plies or more, no line twice.
  scripts/make_book_games.py games --engine build/release/quill -o data/games.pgn
      Lets the engine play against itself from the end of each line. Interrupted, it goes on where
      the output ends. The same seed and engine give the same games.
  scripts/make_book_games.py audit FILE --engine ENGINE
      FILE is a list of openings or a game collection. Searches every position and names the moves
      that lose more than --loss centipawns against the engine's own choice. With --remove the games
      of a collection that contain such a move are taken out of it.
"""

import argparse
import collections
import multiprocessing
import pathlib
import random
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tools"))

from chess_rules import Position, square_of  # noqa: E402
from uci_client import Engine  # noqa: E402

OPENINGS = ROOT / "data" / "openings.txt"
RESULTS = ("1-0", "0-1", "1/2-1/2")

# A game is given up when both sides agree that one is winning, or that nothing happens any more.
WIN_SCORE = 500  # centipawns
WIN_PLIES = 6
DRAW_SCORE = 20
DRAW_PLIES = 12
DRAW_FROM_PLY = 60
MAX_PLIES = 200


# Moves and files.


def find_move(position, text):
    """The legal move that a text in standard algebraic notation means. On failure: ValueError."""
    wanted = text.rstrip("+#!?")
    if wanted.startswith("O-O"):
        home = "e1" if position.white else "e8"
        target = {"O-O": "g", "O-O-O": "c"}.get(wanted, "?") + home[1]
        kind = "K"
    else:
        squares = re.search(r"([a-h][1-8])(=[QRBN])?$", wanted)
        if not squares:
            raise ValueError(f"{text} is no move")
        target = squares.group(1)
        kind = wanted[0] if wanted[0] in "KQRBN" else "P"
    found = [
        move
        for move in position.pseudo_moves()
        if move[2:4] == target
        and position.board[square_of(move)].upper() == kind
        and position.is_safe(move)
    ]
    # The full text is costly and only needed where several moves come into question.
    if len(found) > 1:
        found = [move for move in found if position.san(move).rstrip("+#") == wanted]
    if len(found) != 1:
        raise ValueError(f"{text} is no move in {position.fen()}")
    return found[0]


def read_openings(path):
    """(line number, code, moves) of each opening."""
    for number, line in enumerate(pathlib.Path(path).read_text().splitlines(), 1):
        words = line.split()
        if words and not words[0].startswith("#"):
            yield number, words[0], words[1:]


def read_games(path):
    """(text, moves) of each game of a collection that this program wrote."""
    text = pathlib.Path(path).read_text() if pathlib.Path(path).exists() else ""
    for game in re.split(r"(?m)^(?=\[Event )", text):
        words = re.sub(r"(?m)^\[.*\]$", "", game).split()
        if words:
            yield game, [word for word in words if word not in RESULTS and not word[0].isdigit()]


def check_lines():
    seen = {}
    faults = 0
    for number, _, moves in read_openings(OPENINGS):
        position = Position()
        fault = None
        try:
            for move in moves:
                position.push(find_move(position, move))
        except ValueError as error:
            fault = str(error)
        if len(moves) < 8:
            fault = "shorter than eight plies"
        if tuple(moves) in seen:
            fault = f"the same as line {seen[tuple(moves)]}"
        seen[tuple(moves)] = number
        if fault:
            faults += 1
            print(f"{OPENINGS}:{number}: {fault}")
    print(f"{len(seen)} lines, {faults} faults")
    return 1 if faults else 0


# Self-play.


class Adjudicator:
    """Ends a game that the scores of both sides have decided."""

    def __init__(self):
        self.scores = []  # centipawns, White's view

    def verdict(self, score, white_moved):
        """The result once it is clear, else None."""
        if score is None:
            return None
        self.scores.append(score if white_moved else -score)
        last = self.scores[-WIN_PLIES:]
        if len(last) == WIN_PLIES and min(last) >= WIN_SCORE:
            return "1-0"
        if len(last) == WIN_PLIES and max(last) <= -WIN_SCORE:
            return "0-1"
        last = self.scores[-DRAW_PLIES:]
        quiet = len(last) == DRAW_PLIES and max(map(abs, last)) <= DRAW_SCORE
        if quiet and len(self.scores) >= DRAW_FROM_PLY:
            return "1/2-1/2"
        return "1/2-1/2" if len(self.scores) >= MAX_PLIES else None


def play_game(engine, opening, nodes, rng):
    """(moves as text, result)."""
    position = Position()
    moves, texts = [], []

    def make(move):
        texts.append(position.san(move))
        position.push(move)
        moves.append(move)

    for text in opening:
        make(find_move(position, text))
    engine.clear()
    adjudicator = Adjudicator()
    while True:
        outcome = position.outcome()
        if outcome:
            return texts, outcome[0]
        # The strength varies a little from move to move, or all games of a line would be the same.
        limit = round(nodes * rng.uniform(0.6, 1.4))
        answer = engine.go(f"nodes {limit}", "startpos moves " + " ".join(moves))
        if answer.move not in position.legal_moves():
            raise RuntimeError(f"illegal move {answer.move} in {position.fen()}")
        white = position.white
        make(answer.move)
        verdict = adjudicator.verdict(answer.score(), white)
        if verdict:
            return texts, verdict


def pgn_of(code, texts, result):
    words = []
    for ply, text in enumerate(texts):
        words += [f"{ply // 2 + 1}."] * (ply % 2 == 0) + [text]
    lines, line = [], ""
    for word in words + [result]:
        if len(line) + 1 + len(word) > 100:
            lines.append(line)
            line = ""
        line += (" " if line else "") + word
    return f'[Event "{code}"]\n[Result "{result}"]\n\n' + "\n".join(lines + [line]) + "\n\n"


def open_engine(command):
    engine = Engine(command)
    for name, value in (("OwnBook", "false"), ("Threads", 1), ("Hash", 16)):
        if name in engine.options:
            engine.set_option(name, value)
    engine.ready()
    return engine


def play_line(task):
    """The games of one line, each different from the others."""
    code, opening, args = task
    rng = random.Random(f"{args.seed} {' '.join(opening)}")
    games = {}
    with open_engine(args.engine) as engine:
        for _ in range(args.per_line):
            texts, result = play_game(engine, opening, args.nodes, rng)
            games[tuple(texts)] = result
    return "".join(pgn_of(code, texts, result) for texts, result in games.items())


def make_games(args):
    done = [tuple(moves) for _, moves in read_games(args.output)]
    tasks = []
    for _, code, opening in read_openings(OPENINGS):
        if not any(game[: len(opening)] == tuple(opening) for game in done):
            tasks.append((code, opening, args))
    tasks = tasks[: args.lines] if args.lines else tasks
    with open(args.output, "a") as out, multiprocessing.Pool(args.jobs) as pool:
        for number, text in enumerate(pool.imap(play_line, tasks), 1):
            out.write(text)
            out.flush()
            print(f"\r{number} of {len(tasks)} lines", end="", file=sys.stderr)
    print(file=sys.stderr)
    return 0


# Audit.


def book_key(position):
    """The position as a book knows it: FEN without counters, en passant only where possible."""
    men, side, castling, square = position.fen().split()[:4]
    takes = (m for m in position.pseudo_moves() if m[2:4] == square)
    if not any(position.board[square_of(m)] in "Pp" for m in takes):
        square = "-"
    return f"{men} {side} {castling} {square}"


def first_plies(moves, count):
    """(position's key, move, its text) of the first plies of a game."""
    position = Position()
    for text in moves[:count]:
        move = find_move(position, text)
        yield book_key(position), move, text
        position.push(move)


def moves_to_audit(games, max_ply):
    """key -> {move: [text, games]} of the first plies of all games."""
    found = collections.defaultdict(dict)
    for moves in games:
        for key, move, text in first_plies(moves, max_ply):
            found[key].setdefault(move, [text, 0])[1] += 1
    return found


def audit_position(task):
    """[(position's key, move, text, loss in centipawns)] of the moves that lose too much."""
    fen, moves, args = task
    engine = open_engine_once(args.engine)
    # What a short search blames, a longer one has to confirm.
    for nodes in (args.nodes, 10 * args.nodes):
        best = engine.go(f"nodes {nodes}", f"fen {fen} 0 1")
        bad = []
        for move, (text, _) in moves.items():
            if move == best.move:
                continue
            after = engine.go(f"nodes {nodes}", f"fen {fen} 0 1 moves {move}")
            loss = best.score() + after.score()
            if loss > args.loss:
                bad.append((fen, move, text, loss))
        if not bad:
            break
        moves = {move: moves[move] for _, move, _, _ in bad}
    return bad


engines = {}


def open_engine_once(command):
    """The engine of this process."""
    if command not in engines:
        engines[command] = open_engine(command)
    return engines[command]


def remove_games(path, bad, max_ply):
    """Takes the games with a bad move among their first plies out of the collection."""
    kept, removed = [], 0
    for text, moves in read_games(path):
        if any((key, move) in bad for key, move, _ in first_plies(moves, max_ply)):
            removed += 1
        else:
            kept.append(text)
    pathlib.Path(path).write_text("".join(kept))
    print(f"{removed} games removed, {len(kept)} kept")


def audit(args):
    is_lines = not args.file.endswith(".pgn")
    if is_lines:
        games = [moves for _, _, moves in read_openings(args.file)]
    else:
        games = [moves for _, moves in read_games(args.file)]
    tasks = []
    for key, moves in moves_to_audit(games, args.max_ply).items():
        used = {m: v for m, v in moves.items() if v[1] >= args.min_games}
        if used:
            tasks.append((key, used, args))
    bad = set()
    with multiprocessing.Pool(args.jobs) as pool:
        for found in pool.imap(audit_position, tasks, chunksize=8):
            for key, move, text, loss in found:
                bad.add((key, move))
                print(f"{text} loses {loss} in {key}", flush=True)
        # The engines of the pool's processes end with their standard input.
    moves = sum(len(used) for _, used, _ in tasks)
    print(f"{moves} moves in {len(tasks)} positions, {len(bad)} of them lose more than {args.loss}")
    if args.remove and not is_lines:
        remove_games(args.file, bad, args.max_ply)
        return 0
    return 1 if bad else 0


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    commands = parser.add_subparsers(dest="command", required=True)
    commands.add_parser("lines")
    games = commands.add_parser("games")
    games.add_argument("--engine", required=True)
    games.add_argument("-o", "--output", required=True)
    games.add_argument("--per-line", type=int, default=12, help="games from each line")
    games.add_argument("--nodes", type=int, default=20000, help="of a search, on the average")
    games.add_argument("--lines", type=int, default=0, help="only so many lines")
    games.add_argument("--seed", type=int, default=1)
    games.add_argument("--jobs", type=int, default=multiprocessing.cpu_count())
    check = commands.add_parser("audit")
    check.add_argument("file")
    check.add_argument("--engine", required=True)
    check.add_argument("--nodes", type=int, default=200000)
    check.add_argument("--loss", type=int, default=80, help="centipawns")
    check.add_argument("--max-ply", type=int, default=24)
    check.add_argument("--min-games", type=int, default=1)
    check.add_argument("--remove", action="store_true", help="the games with such a move")
    check.add_argument("--jobs", type=int, default=multiprocessing.cpu_count())
    args = parser.parse_args()
    if args.command == "lines":
        return check_lines()
    return make_games(args) if args.command == "games" else audit(args)


if __name__ == "__main__":
    sys.exit(main())
