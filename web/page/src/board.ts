// The board: shows a position and takes the moves that the engine calls legal.

import { Chessboard, COLOR, INPUT_EVENT_TYPE } from "cm-chessboard/src/Chessboard.js";
import { Accessibility } from "cm-chessboard/src/extensions/accessibility/Accessibility.js";
import { Arrows } from "cm-chessboard/src/extensions/arrows/Arrows.js";
import { Markers } from "cm-chessboard/src/extensions/markers/Markers.js";
import { PromotionDialog } from "cm-chessboard/src/extensions/promotion-dialog/PromotionDialog.js";
import arrowsUrl from "cm-chessboard/assets/extensions/arrows/arrows.svg?url";
import markersUrl from "cm-chessboard/assets/extensions/markers/markers.svg?url";
import piecesUrl from "cm-chessboard/assets/pieces/standard.svg?url";
import { kingSquare, type Position } from "./position";

const LAST_MOVE = { class: "marker-last", slice: "markerSquare" };
const CHECK = { class: "marker-check", slice: "markerCircleFilled" };
const SELECTED = { class: "marker-selected", slice: "markerSquare" };
const BEST_MOVE = { class: "arrow-best" };
const ANIMATION_MS = 180;

/** Part of what the widget tells about a move that somebody makes. */
type InputEvent = { type: string; squareFrom: string; squareTo: string };

const absolute = (url: string): string => new URL(url, document.baseURI).href;
const colour = (white: boolean): string => (white ? COLOR.white : COLOR.black);

export class Board {
  private readonly widget;
  private position: Position | undefined;
  private arrow: string | undefined;

  /** `onMove` gets a legal move of the position that was shown, `onRefusal` one that is not legal. */
  constructor(
    private readonly host: HTMLElement,
    private readonly onMove: (position: Position, move: string) => void,
    private readonly onRefusal: (from: string, to: string) => void,
  ) {
    const calm = matchMedia("(prefers-reduced-motion: reduce)").matches;
    this.widget = new Chessboard(host, {
      style: { cssClass: "brindle", pieces: { file: absolute(piecesUrl) }, animationDuration: calm ? 0 : ANIMATION_MS },
      extensions: [
        { class: Markers, props: { sprite: absolute(markersUrl), autoMarkers: SELECTED } },
        { class: Arrows, props: { sprite: absolute(arrowsUrl), headSize: 4 } },
        { class: PromotionDialog, props: { language: "en" } },
        { class: Accessibility, props: { language: "en", keyboardMoveInput: true, movePieceForm: false } },
      ],
    });
  }

  /** Shows a position with an arrow for the best move. Moves are taken if `input` says so, and the host is marked. */
  show(position: Position, input: boolean, whiteBelow: boolean, best: string | undefined): void {
    const changed = this.position !== position;
    this.position = position;
    if (this.widget.getOrientation() !== colour(whiteBelow)) this.widget.setOrientation(colour(whiteBelow), true);
    if (changed) this.showPosition(position);
    if (this.arrow !== best) this.showArrow(best);
    this.host.toggleAttribute("data-ready", input);
    const enabled = this.widget.isMoveInputEnabled();
    if (!changed && input === enabled) return;
    if (enabled) this.widget.disableMoveInput();
    if (input) this.widget.enableMoveInput((event: InputEvent) => this.take(position, event), colour(position.white));
  }

  private showPosition({ fen, board, white, move, check }: Position): void {
    this.widget.setPosition(fen, true);
    this.widget.removeLegalMovesMarkers();
    this.widget.removeMarkers();
    for (const square of move?.match(/[a-h][1-8]/g) ?? []) this.widget.addMarker(LAST_MOVE, square);
    if (check) this.widget.addMarker(CHECK, kingSquare(board, white));
  }

  private showArrow(move: string | undefined): void {
    this.arrow = move;
    this.widget.removeArrows();
    if (move) this.widget.addArrow(BEST_MOVE, move.slice(0, 2), move.slice(2, 4));
  }

  private take(position: Position, { type, squareFrom, squareTo }: InputEvent): boolean {
    if (this.position !== position || type === INPUT_EVENT_TYPE.movingOverSquare) return false;
    this.widget.removeLegalMovesMarkers();
    const moves = position.legal.filter((move) => move.startsWith(squareFrom));
    if (type === INPUT_EVENT_TYPE.moveInputStarted) {
      this.widget.addLegalMovesMarkers(moves.map((move) => ({ to: move.slice(2, 4), promotion: move[4] })));
      return moves.length > 0;
    }
    if (type !== INPUT_EVENT_TYPE.validateMoveInput) return false;
    const move = moves.find((legal) => legal.slice(2, 4) === squareTo);
    if (!move) {
      const own = this.widget.getPiece(squareTo)?.startsWith(colour(position.white));
      if (!own) this.onRefusal(squareFrom, squareTo);
      return false;
    }
    // The widget takes no press while a move that it accepted waits for an animation. So it is told that the move is
    // not accepted, and the board moves the piece.
    const dragged = document.querySelector(".cm-chessboard-draggable-piece") !== null;
    this.widget.movePiece(squareFrom, squareTo, !dragged);
    if (move.length > 4) this.promote(position, move.slice(0, 4));
    else this.hand(position, move);
    return false;
  }

  private promote(position: Position, move: string): void {
    const color = colour(position.white);
    this.widget.showPromotionDialog(move.slice(2), color, ({ piece }: { piece?: string }) => {
      if (this.position !== position) return;
      if (piece) this.hand(position, move + piece.charAt(1));
      else this.widget.setPosition(position.fen, true);
    });
  }

  /** Hands a move over. No other is taken until the next call of `show`. */
  private hand(position: Position, move: string): void {
    this.position = undefined;
    this.host.toggleAttribute("data-ready", false);
    this.onMove(position, move);
  }
}
