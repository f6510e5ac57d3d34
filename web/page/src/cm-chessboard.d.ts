// The part of cm-chessboard's interface that the page uses. The package brings no types of its own.
declare module "cm-chessboard/src/Chessboard.js" {
  export const COLOR: { white: "w"; black: "b" };
  export const INPUT_EVENT_TYPE: { moveInputStarted: string; validateMoveInput: string };
  export type InputEvent = { type: string; squareFrom: string; squareTo: string };
  export type MarkerType = { class: string; slice: string };
  export class Chessboard {
    constructor(host: HTMLElement, props: object);
    setPosition(fen: string, animated: boolean): Promise<void>;
    movePiece(from: string, to: string, animated: boolean): Promise<void>;
    setOrientation(color: string, animated: boolean): Promise<void>;
    getOrientation(): "w" | "b";
    getPiece(square: string): string | null;
    enableMoveInput(handler: (event: InputEvent) => boolean | undefined, color: string): void;
    disableMoveInput(): void;
    isMoveInputEnabled(): boolean;
    addMarker(type: MarkerType, square: string): void;
    removeMarkers(): void;
    addLegalMovesMarkers(moves: { to: string }[]): void;
    removeLegalMovesMarkers(): void;
    addArrow(type: { class: string }, from: string, to: string): void;
    removeArrows(): void;
    showPromotionDialog(square: string, color: string, chosen: (result: { type: string; piece?: string }) => void): void;
  }
}
declare module "cm-chessboard/src/extensions/*";
