// cm-chessboard brings no types of its own.
declare module "cm-chessboard/src/*";
