// The board: shows a position and takes the moves that the engine calls legal.

import { Chessboard, COLOR, INPUT_EVENT_TYPE, type InputEvent } from "cm-chessboard/src/Chessboard.js";
import { Accessibility } from "cm-chessboard/src/extensions/accessibility/Accessibility.js";
import { Arrows } from "cm-chessboard/src/extensions/arrows/Arrows.js";
import { Markers } from "cm-chessboard/src/extensions/markers/Markers.js";
import { PROMOTION_DIALOG_RESULT_TYPE, PromotionDialog } from "cm-chessboard/src/extensions/promotion-dialog/PromotionDialog.js";
import arrowsUrl from "cm-chessboard/assets/extensions/arrows/arrows.svg?url";
import markersUrl from "cm-chessboard/assets/extensions/markers/markers.svg?url";
import piecesUrl from "cm-chessboard/assets/pieces/standard.svg?url";
import type { Node } from "./game";

const LAST_MOVE = { class: "marker-last", slice: "markerSquare" };
const CHECK = { class: "marker-check", slice: "markerCircleFilled" };
const SELECTED = { class: "marker-selected", slice: "markerSquare" };
const BEST_MOVE = { class: "arrow-best" };

const absolute = (url: string): string => new URL(url, document.baseURI).href;

export class Board {
  private readonly widget: Chessboard;
  private node: Node | undefined;
  private arrow = "";

  /** `onMove` gets a legal move of the node that was shown, `onRefusal` the two squares of one that is not legal. */
  constructor(
    private readonly host: HTMLElement,
    private readonly onMove: (node: Node, move: string) => void,
    private readonly onRefusal: (from: string, to: string) => void,
  ) {
    const calm = matchMedia("(prefers-reduced-motion: reduce)").matches;
    this.widget = new Chessboard(host, {
      style: { cssClass: "brindle", pieces: { file: absolute(piecesUrl) }, animationDuration: calm ? 0 : 180 },
      extensions: [
        { class: Markers, props: { sprite: absolute(markersUrl), autoMarkers: SELECTED } },
        { class: Arrows, props: { sprite: absolute(arrowsUrl), headSize: 4 } },
        { class: PromotionDialog, props: { language: "en" } },
        { class: Accessibility, props: { language: "en", keyboardMoveInput: true, movePieceForm: false } },
      ],
    });
  }

  /** Shows a position. Moves are taken for the side to move if `input` says so. The host is marked while they are. */
  show(node: Node, input: boolean): void {
    const changed = this.node !== node;
    this.node = node;
    void this.widget.setPosition(node.fen, true);
    if (changed) {
      this.widget.removeLegalMovesMarkers();
      this.widget.removeMarkers();
      for (const square of node.move ? [node.move.slice(0, 2), node.move.slice(2, 4)] : []) {
        this.widget.addMarker(LAST_MOVE, square);
      }
      const king = this.kingSquare(node);
      if (node.check && king) this.widget.addMarker(CHECK, king);
      this.showArrow(undefined);
    }
    this.host.toggleAttribute("data-ready", input);
    const enabled = this.widget.isMoveInputEnabled();
    if (!changed && input === enabled) return;
    if (enabled) this.widget.disableMoveInput();
    if (input) this.widget.enableMoveInput((event) => this.take(event), node.white ? COLOR.white : COLOR.black);
  }

  private kingSquare(node: Node): string | undefined {
    const at = node.board.indexOf(node.white ? "K" : "k");
    return at < 0 ? undefined : "abcdefgh".charAt(at % 8) + (8 - Math.floor(at / 8));
  }

  private take(event: InputEvent): boolean | undefined {
    const node = this.node;
    if (!node) return false;
    this.widget.removeLegalMovesMarkers();
    const moves = node.legal.filter((move) => move.startsWith(event.squareFrom));
    if (event.type === INPUT_EVENT_TYPE.moveInputStarted) {
      const targets = new Set(moves.map((move) => move.slice(2, 4)));
      this.widget.addLegalMovesMarkers([...targets].map((to) => ({ to })));
      return moves.length > 0;
    }
    if (event.type !== INPUT_EVENT_TYPE.validateMoveInput) return undefined;
    const [move] = moves.filter((legal) => legal.slice(2, 4) === event.squareTo);
    if (!move) {
      const own = this.widget.getPiece(event.squareTo)?.startsWith(node.white ? "w" : "b");
      if (!own) this.onRefusal(event.squareFrom, event.squareTo);
      return false;
    }
    // The widget takes no press while a move that it accepted waits for an animation. So it is told that the move is not
    // accepted, and the board moves the piece.
    const dragged = document.querySelector(".cm-chessboard-draggable-piece") !== null;
    void this.widget.movePiece(event.squareFrom, event.squareTo, !dragged);
    if (move.length > 4) this.promote(node, move.slice(0, 4));
    else this.hand(node, move);
    return false;
  }

  /** Hands a move over. No other is taken until the next call of `show`. */
  private hand(node: Node, move: string): void {
    this.node = undefined;
    this.host.toggleAttribute("data-ready", false);
    this.onMove(node, move);
  }

  private promote(node: Node, move: string): void {
    this.widget.showPromotionDialog(move.slice(2, 4), node.white ? COLOR.white : COLOR.black, (result) => {
      if (this.node !== node) return;
      if (result.type === PROMOTION_DIALOG_RESULT_TYPE.pieceSelected) this.hand(node, move + (result.piece?.[1] ?? ""));
      else void this.widget.setPosition(node.fen, true);
    });
  }

  showArrow(move: string | undefined): void {
    if (this.arrow === (move ?? "")) return;
    this.arrow = move ?? "";
    this.widget.removeArrows();
    if (move) this.widget.addArrow(BEST_MOVE, move.slice(0, 2), move.slice(2, 4));
  }

  get whiteBelow(): boolean {
    return this.widget.getOrientation() === COLOR.white;
  }

  turn(whiteBelow: boolean): Promise<void> {
    return this.widget.setOrientation(whiteBelow ? COLOR.white : COLOR.black, true);
  }
}
