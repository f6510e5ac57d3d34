// Single terms of one colour, for the trace and the tests. The evaluation does not come here: it
// takes one survey of the board for all terms.
#include "eval/king_safety.h"
#include "eval/piece_terms.h"
#include "eval/survey.h"

namespace brindlemoth {

Survey survey_board(const Position& position) {
    Survey survey;
    survey_pawns<WHITE>(position, survey);
    survey_pawns<BLACK>(position, survey);
    survey_pieces<WHITE>(position, survey);
    survey_pieces<BLACK>(position, survey);
    return survey;
}

Score evaluate_mobility(const Position& position, int colour) {
    return survey_board(position).mobility[colour];
}

Score evaluate_outposts(const Position& position, int colour) {
    const Survey survey = survey_board(position);
    return colour == WHITE ? outposts<WHITE>(position, survey) : outposts<BLACK>(position, survey);
}

Score evaluate_rooks(const Position& position, int colour) {
    const Survey survey = survey_board(position);
    return colour == WHITE ? rooks<WHITE>(position, survey) : rooks<BLACK>(position, survey);
}

Score evaluate_threats(const Position& position, int colour) {
    const Survey survey = survey_board(position);
    return colour == WHITE ? threats<WHITE>(position, survey) : threats<BLACK>(position, survey);
}

int king_danger(const Position& position, int colour) {
    if (position.pieces[colour][KING] == 0)
        return 0;
    const Survey survey = survey_board(position);
    return colour == WHITE ? king_danger<WHITE>(position, survey)
                           : king_danger<BLACK>(position, survey);
}

} // namespace brindlemoth
