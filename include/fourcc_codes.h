// Every code that fourcc.h knows something of by itself, each once: those of the catalogue, of the sets and of the
// frame sizes. In the order of their texts, then what is no text by its value.
//
// Of the range from KVFCC_RANGE up, only its two uncompressed codes are here; the rest of it has a rule, no list. That
// a code is here says nothing of its being a video or audio code: fccIsSupported does.
#ifndef FOURCC_CODES_H
#define FOURCC_CODES_H

#include "fourcc.h"

/* For an array of your own: static const uint32_t codes[] = {KVFCC_LISTED_CODES}; */
// clang-format off
#define KVFCC_LISTED_CODES                                                                                             \
    KVFCC(' ', 'a', 'g', 't'), KVFCC(' ', 'c', 'a', 'a'), KVFCC(' ', 'c', 'm', 's'), KVFCC(' ', 'c', 'v', 'd'),        \
    KVFCC(' ', 'e', 'l', 'r'), KVFCC(' ', 'f', 'i', 'g'), KVFCC(' ', 'g', 'n', 'p'), KVFCC(' ', 'r', 'v', 'a'),        \
    KVFCC(' ', 's', 'x', 'j'), KVFCC(' ', 'w', 'a', 'r'), KVFCC('0', '0', 'v', 'd'), KVFCC('0', '1', '2', 'V'),        \
    KVFCC('0', '1', '2', 'v'), KVFCC('0', '1', '4', 'v'), KVFCC('0', '1', 'V', 'A'), KVFCC('0', '1', 'd', '3'),        \
    KVFCC('0', '2', '4', 'y'), KVFCC('0', '3', 'd', '3'), KVFCC('0', '5', 'X', 'D'), KVFCC('0', '5', 'x', 'd'),        \
    KVFCC('0', 'd', 'V', 'A'), KVFCC('1', '0', '7', 'm'), KVFCC('1', '0', 'v', 'd'), KVFCC('1', '4', 'V', 'I'),        \
    KVFCC('1', '6', '2', 'h'), KVFCC('1', 'C', 'V', 'A'), KVFCC('1', 'F', 'V', 'F'), KVFCC('1', 'Q', 'V', 'S'),        \
    KVFCC('1', 'S', 'C', 'A'), KVFCC('1', 'V', 'I', 'D'), KVFCC('1', 'b', 'm', 'd'), KVFCC('1', 'c', 'v', 'a'),        \
    KVFCC('1', 'c', 'v', 'h'), KVFCC('1', 'd', 'V', 'A'), KVFCC('1', 'h', 'v', 'd'), KVFCC('1', 'r', 'v', 'd'),        \
    KVFCC('1', 'v', 'd', 'h'), KVFCC('1', 'v', 'd', 'x'), KVFCC('1', 'v', 'e', 'h'), KVFCC('2', '0', 'v', 'd'),        \
    KVFCC('2', '1', 'i', 'a'), KVFCC('2', '2', 'i', 'a'), KVFCC('2', '3', 'F', 'C'), KVFCC('2', '3', 'd', '3'),        \
    KVFCC('2', '3', 'l', 'f'), KVFCC('2', '3', 'n', 'i'), KVFCC('2', '5', 'i', 'a'), KVFCC('2', '9', 'U', 'V'),        \
    KVFCC('2', 'R', 'Y', 'B'), KVFCC('2', 'S', 'C', 'A'), KVFCC('2', 'V', 'I', 'D'), KVFCC('2', 'V', 'u', 'y'),        \
    KVFCC('2', 'd', 'V', 'A'), KVFCC('2', 'h', 'v', 'd'), KVFCC('2', 'p', 'j', 'm'), KVFCC('2', 'v', 'd', 'h'),        \
    KVFCC('2', 'v', 'd', 'x'), KVFCC('2', 'v', 'u', 'y'), KVFCC('2', 'x', 'd', 'c'), KVFCC('3', '-', 'c', 'a'),        \
    KVFCC('3', '0', 'v', 'd'), KVFCC('3', '1', 'i', 'a'), KVFCC('3', '2', 'i', 'a'), KVFCC('3', '5', 'i', 'a'),        \
    KVFCC('3', '6', '2', 'h'), KVFCC('3', 'I', 'V', '0'), KVFCC('3', 'I', 'V', '1'), KVFCC('3', 'I', 'V', '2'),        \
    KVFCC('3', 'I', 'V', 'D'), KVFCC('3', 'I', 'V', 'X'), KVFCC('3', 'V', 'I', 'D'), KVFCC('3', 'd', 'V', 'A'),        \
    KVFCC('3', 'h', 'v', 'd'), KVFCC('3', 'p', 'm', '.'), KVFCC('3', 'v', 'd', 'h'), KVFCC('3', 'v', 'd', 'x'),        \
    KVFCC('4', '0', 'v', 'd'), KVFCC('4', '2', '2', 'P'), KVFCC('4', '2', 'n', 'i'), KVFCC('4', '6', '2', 'I'),        \
    KVFCC('4', '6', '2', 'a'), KVFCC('4', '6', 'B', 'A'), KVFCC('4', '6', 'G', 'B'), KVFCC('4', '6', 'G', 'R'),        \
    KVFCC('4', '6', 'R', 'A'), KVFCC('4', '6', 'U', 'V'), KVFCC('4', '6', 'l', 'f'), KVFCC('4', 'S', 'D', 'H'),        \
    KVFCC('4', 'V', 'I', 'D'), KVFCC('4', 'c', 'v', 'a'), KVFCC('4', 'd', 'V', 'A'), KVFCC('4', 'v', 'a', 'x'),        \
    KVFCC('4', 'v', 'd', 'h'), KVFCC('4', 'v', 'd', 'x'), KVFCC('4', 'x', 'd', 'c'), KVFCC('4', 'x', 'n', 'd'),        \
    KVFCC('5', '0', 'v', 'd'), KVFCC('5', '1', 'i', 'a'), KVFCC('5', '2', 'i', 'a'), KVFCC('5', '5', 'F', 'S'),        \
    KVFCC('5', '5', 'i', 'a'), KVFCC('5', '6', 'F', 'S'), KVFCC('5', 'V', 'I', 'D'), KVFCC('5', 'd', 'V', 'A'),        \
    KVFCC('5', 'h', 'v', 'd'), KVFCC('5', 'v', 'd', 'h'), KVFCC('5', 'v', 'd', 'x'), KVFCC('5', 'x', 'V', 'A'),        \
    KVFCC('6', '0', 'v', 'd'), KVFCC('6', '1', 'i', 'a'), KVFCC('6', '1', 'l', 'f'), KVFCC('6', '2', 'i', 'a'),        \
    KVFCC('6', '5', 'i', 'a'), KVFCC('6', 'V', 'I', 'D'), KVFCC('6', 'd', 'V', 'A'), KVFCC('6', 'h', 'v', 'd'),        \
    KVFCC('6', 'v', 'd', 'h'), KVFCC('6', 'v', 'd', 'x'), KVFCC('7', 'd', 'V', 'A'), KVFCC('7', 'v', 'd', 'h'),        \
    KVFCC('7', 'v', 'd', 'x'), KVFCC('8', '0', '3', 'v'), KVFCC('8', '0', '4', 'v'), KVFCC('8', '0', 'd', '3'),        \
    KVFCC('8', '4', 'G', 'B'), KVFCC('8', 'd', 'V', 'A'), KVFCC('8', 'v', 'd', 'h'), KVFCC('8', 'v', 'd', 'x'),        \
    KVFCC('9', '5', 'd', 'x'), KVFCC('9', 'd', 'V', 'A'), KVFCC('9', 'v', 'd', 'h'), KVFCC('9', 'v', 'd', 'x'),        \
    KVFCC('9', 'v', 'y', 's'), KVFCC('A', '2', '6', '4'), KVFCC('A', 'B', '1', '4'), KVFCC('A', 'B', '1', '6'),        \
    KVFCC('A', 'B', 'G', 'R'), KVFCC('A', 'D', 'V', '2'), KVFCC('A', 'E', 'M', 'I'), KVFCC('A', 'F', '1', 'L'),        \
    KVFCC('A', 'F', 'L', 'C'), KVFCC('A', 'H', '1', '2'), KVFCC('A', 'H', '1', '4'), KVFCC('A', 'J', 'A', 'v'),        \
    KVFCC('A', 'J', 'J', 'f'), KVFCC('A', 'J', 'Y', 'U'), KVFCC('A', 'M', 'P', 'G'), KVFCC('A', 'N', 'I', 'M'),        \
    KVFCC('A', 'P', '4', '1'), KVFCC('A', 'P', '4', '2'), KVFCC('A', 'P', 'v', 'k'), KVFCC('A', 'R', '1', 'L'),        \
    KVFCC('A', 'R', 'G', 'B'), KVFCC('A', 'S', 'V', '1'), KVFCC('A', 'U', 'R', '2'), KVFCC('A', 'U', 'R', 'A'),        \
    KVFCC('A', 'V', 'D', 'N'), KVFCC('A', 'V', 'R', 'n'), KVFCC('A', 'Y', 'U', 'V'), KVFCC('A', 'c', 'v', 'h'),        \
    KVFCC('A', 'r', 'n', 'd'), KVFCC('B', 'G', 'G', 'R'), KVFCC('B', 'G', 'G', 'c'), KVFCC('B', 'G', 'd', '3'),        \
    KVFCC('B', 'T', '2', '0'), KVFCC('B', 'T', 'C', 'V'), KVFCC('B', 'W', '1', '0'), KVFCC('B', 'Y', 'R', '3'),        \
    KVFCC('C', 'B', 'Y', '2'), KVFCC('C', 'B', 'Y', 'R'), KVFCC('C', 'C', '1', '2'), KVFCC('C', 'D', 'C', 'V'),        \
    KVFCC('C', 'F', 'C', 'C'), KVFCC('C', 'F', 'H', 'D'), KVFCC('C', 'G', 'D', 'I'), KVFCC('C', 'H', 'A', 'M'),        \
    KVFCC('C', 'L', 'J', 'R'), KVFCC('C', 'L', 'P', 'L'), KVFCC('C', 'O', 'L', '0'), KVFCC('C', 'O', 'L', '1'),        \
    KVFCC('C', 'P', 'L', 'A'), KVFCC('C', 'R', 'A', 'M'), KVFCC('C', 'V', 'I', 'D'), KVFCC('C', 'W', 'L', 'T'),        \
    KVFCC('C', 'Y', 'D', 'H'), KVFCC('C', 'Y', 'U', 'V'), KVFCC('C', 'Y', 'U', 'Y'), KVFCC('D', '3', 'F', 'C'),        \
    KVFCC('D', 'B', 'Y', 'R'), KVFCC('D', 'H', 'F', 'C'), KVFCC('D', 'I', 'B', ' '), KVFCC('D', 'I', 'V', '1'),        \
    KVFCC('D', 'I', 'V', '2'), KVFCC('D', 'I', 'V', '3'), KVFCC('D', 'I', 'V', '4'), KVFCC('D', 'I', 'V', '5'),        \
    KVFCC('D', 'I', 'V', '6'), KVFCC('D', 'U', 'C', 'K'), KVFCC('D', 'V', 'H', '1'), KVFCC('D', 'V', 'H', 'D'),        \
    KVFCC('D', 'V', 'X', '1'), KVFCC('D', 'V', 'X', '2'), KVFCC('D', 'V', 'X', '3'), KVFCC('D', 'X', '5', '0'),        \
    KVFCC('D', 'X', 'T', '1'), KVFCC('D', 'X', 'T', '2'), KVFCC('D', 'X', 'T', '3'), KVFCC('D', 'X', 'T', '4'),        \
    KVFCC('D', 'X', 'T', '5'), KVFCC('D', 'X', 'T', 'C'), KVFCC('E', 'L', 'R', 'W'), KVFCC('E', 'N', 'O', 'N'),        \
    KVFCC('F', 'L', 'J', 'P'), KVFCC('F', 'R', 'W', 'A'), KVFCC('F', 'R', 'W', 'D'), KVFCC('G', 'B', 'R', 'G'),        \
    KVFCC('G', 'B', 'R', 'c'), KVFCC('G', 'B', 'd', '3'), KVFCC('G', 'J', 'm', 'I'), KVFCC('G', 'P', 'J', 'M'),        \
    KVFCC('G', 'R', 'B', 'G'), KVFCC('G', 'R', 'B', 'c'), KVFCC('G', 'R', 'd', '3'), KVFCC('G', 'T', 'N', 'P'),        \
    KVFCC('G', 'W', 'L', 'T'), KVFCC('H', '2', '6', '0'), KVFCC('H', '2', '6', '1'), KVFCC('H', '2', '6', '2'),        \
    KVFCC('H', '2', '6', '3'), KVFCC('H', '2', '6', '4'), KVFCC('H', '2', '6', '5'), KVFCC('H', '2', '6', '6'),        \
    KVFCC('H', '2', '6', '7'), KVFCC('H', '2', '6', '8'), KVFCC('H', '2', '6', '9'), KVFCC('H', '6', 'F', 'S'),        \
    KVFCC('H', 'D', 'Y', 'C'), KVFCC('H', 'M', 'C', 'R'), KVFCC('H', 'M', 'R', 'R'), KVFCC('I', '1', 'A', '2'),        \
    KVFCC('I', '4', '2', '0'), KVFCC('I', 'A', 'N', ' '), KVFCC('I', 'C', '1', '2'), KVFCC('I', 'C', '2', 'K'),        \
    KVFCC('I', 'C', '2', 'X'), KVFCC('I', 'C', 'L', 'B'), KVFCC('I', 'C', 'P', 'V'), KVFCC('I', 'F', '0', '9'),        \
    KVFCC('I', 'G', 'S', '.'), KVFCC('I', 'J', 'P', 'G'), KVFCC('I', 'L', 'V', 'C'), KVFCC('I', 'L', 'V', 'R'),        \
    KVFCC('I', 'O', 'I', '8'), KVFCC('I', 'O', 'I', 'A'), KVFCC('I', 'R', 'A', 'W'), KVFCC('I', 'U', 'V', 'A'),        \
    KVFCC('I', 'V', '3', '0'), KVFCC('I', 'V', '3', '1'), KVFCC('I', 'V', '3', '2'), KVFCC('I', 'V', '3', '3'),        \
    KVFCC('I', 'V', '3', '4'), KVFCC('I', 'V', '3', '5'), KVFCC('I', 'V', '3', '6'), KVFCC('I', 'V', '3', '7'),        \
    KVFCC('I', 'V', '3', '8'), KVFCC('I', 'V', '3', '9'), KVFCC('I', 'V', '4', '0'), KVFCC('I', 'V', '4', '1'),        \
    KVFCC('I', 'V', '4', '2'), KVFCC('I', 'V', '4', '3'), KVFCC('I', 'V', '4', '4'), KVFCC('I', 'V', '4', '5'),        \
    KVFCC('I', 'V', '4', '6'), KVFCC('I', 'V', '4', '7'), KVFCC('I', 'V', '4', '8'), KVFCC('I', 'V', '4', '9'),        \
    KVFCC('I', 'V', '5', '0'), KVFCC('I', 'Y', 'U', '1'), KVFCC('I', 'Y', 'U', '2'), KVFCC('I', 'Y', 'U', 'V'),        \
    KVFCC('I', 'm', 'J', 'G'), KVFCC('I', 'v', 'i', 'a'), KVFCC('J', '2', '2', 'K'), KVFCC('J', '2', '4', 'K'),        \
    KVFCC('J', '2', 'D', 'I'), KVFCC('J', '2', 'D', 'S'), KVFCC('J', '2', 'G', 'V'), KVFCC('J', '2', 'G', '_'),        \
    KVFCC('J', 'D', 'V', 'A'), KVFCC('J', 'P', 'E', 'G'), KVFCC('K', 'M', 'V', 'C'), KVFCC('L', '1', '0', 'R'),        \
    KVFCC('L', '1', 'F', 'A'), KVFCC('L', '1', 'F', 'R'), KVFCC('L', '1', 'R', 'A'), KVFCC('L', '4', '0', 'R'),        \
    KVFCC('L', '4', 'F', 'R'), KVFCC('L', 'J', '2', 'K'), KVFCC('M', '2', '6', '1'), KVFCC('M', '2', '6', '3'),        \
    KVFCC('M', '7', '0', '1'), KVFCC('M', 'C', '1', '2'), KVFCC('M', 'C', 'A', 'M'), KVFCC('M', 'D', 'V', 'F'),        \
    KVFCC('M', 'J', '2', 'C'), KVFCC('M', 'J', 'P', 'G'), KVFCC('M', 'M', 'E', 'S'), KVFCC('M', 'P', '4', '1'),        \
    KVFCC('M', 'P', '4', '2'), KVFCC('M', 'P', '4', '3'), KVFCC('M', 'P', '4', 'S'), KVFCC('M', 'P', '4', 'V'),        \
    KVFCC('M', 'P', 'G', '1'), KVFCC('M', 'P', 'G', '2'), KVFCC('M', 'P', 'G', '3'), KVFCC('M', 'P', 'G', '4'),        \
    KVFCC('M', 'P', 'G', 'I'), KVFCC('M', 'R', 'C', 'A'), KVFCC('M', 'S', 'S', '1'), KVFCC('M', 'S', 'S', '2'),        \
    KVFCC('N', '1', '0', '6'), KVFCC('N', 'C', 'O', 'T'), KVFCC('N', 'C', 'O', 'X'), KVFCC('N', 'T', 'n', '1'),        \
    KVFCC('P', '1', '0', '6'), KVFCC('P', '1', 'A', '2'), KVFCC('P', '4', '2', '2'), KVFCC('P', '7', 'A', '2'),        \
    KVFCC('P', 'B', 'Y', 'R'), KVFCC('P', 'G', 'V', 'V'), KVFCC('P', 'H', 'M', 'O'), KVFCC('P', 'V', 'E', 'Z'),        \
    KVFCC('P', 'V', 'M', 'M'), KVFCC('R', '0', '1', 'L'), KVFCC('R', '0', '4', 'L'), KVFCC('R', 'A', 'W', ' '),        \
    KVFCC('R', 'F', '1', 'L'), KVFCC('R', 'F', '4', 'L'), KVFCC('R', 'G', 'B', '2'), KVFCC('R', 'G', 'B', 'A'),        \
    KVFCC('R', 'G', 'B', 'T'), KVFCC('R', 'G', 'G', 'B'), KVFCC('R', 'G', 'G', 'c'), KVFCC('R', 'G', 'd', '3'),        \
    KVFCC('R', 'L', 'E', '8'), KVFCC('R', 'S', 'D', 'H'), KVFCC('R', 'T', '2', '1'), KVFCC('R', 'V', '1', '0'),        \
    KVFCC('R', 'V', '1', '3'), KVFCC('R', 'V', '2', '0'), KVFCC('R', 'V', '3', '0'), KVFCC('R', 'V', '4', '0'),        \
    KVFCC('R', 'V', 'X', ' '), KVFCC('R', 'Y', 'B', 'P'), KVFCC('S', 'D', 'C', 'C'), KVFCC('S', 'D', 'I', 'V'),        \
    KVFCC('S', 'F', 'M', 'C'), KVFCC('S', 'M', 'S', 'C'), KVFCC('S', 'M', 'S', 'D'), KVFCC('S', 'P', 'B', '8'),        \
    KVFCC('S', 'P', 'I', 'G'), KVFCC('S', 'P', 'L', 'C'), KVFCC('S', 'Q', 'Z', '2'), KVFCC('S', 'T', 'V', 'A'),        \
    KVFCC('S', 'T', 'V', 'B'), KVFCC('S', 'T', 'V', 'C'), KVFCC('S', 'V', '1', '0'), KVFCC('T', 'C', 'D', 'V'),        \
    KVFCC('T', 'L', 'M', 'S'), KVFCC('T', 'L', 'S', 'T'), KVFCC('T', 'L', 'v', 'a'), KVFCC('T', 'M', '2', '0'),        \
    KVFCC('T', 'M', '2', 'X'), KVFCC('T', 'M', 'I', 'C'), KVFCC('T', 'M', 'O', 'T'), KVFCC('T', 'N', 'v', 'k'),        \
    KVFCC('T', 'R', '2', '0'), KVFCC('T', 'S', 'C', '2'), KVFCC('T', 'V', 'M', 'J'), KVFCC('T', 'Y', '0', 'N'),        \
    KVFCC('T', 'Y', '2', 'C'), KVFCC('T', 'Y', '2', 'N'), KVFCC('U', 'C', 'O', 'D'), KVFCC('U', 'L', 'T', 'I'),        \
    KVFCC('U', 'Y', '1', '6'), KVFCC('U', 'Y', 'N', 'V'), KVFCC('U', 'Y', 'V', 'Y'), KVFCC('U', 'c', 'v', 'a'),        \
    KVFCC('V', '2', '6', '1'), KVFCC('V', '4', '2', '2'), KVFCC('V', '6', '5', '5'), KVFCC('V', 'C', 'R', '1'),        \
    KVFCC('V', 'C', 'R', '2'), KVFCC('V', 'D', 'O', 'M'), KVFCC('V', 'D', 'O', 'W'), KVFCC('V', 'D', 'T', 'Z'),        \
    KVFCC('V', 'I', 'V', 'O'), KVFCC('V', 'I', 'X', 'L'), KVFCC('V', 'L', 'V', '1'), KVFCC('V', 'X', '1', 'K'),        \
    KVFCC('V', 'X', '2', 'K'), KVFCC('V', 'X', 'S', 'P'), KVFCC('V', 'c', 'v', 'a'), KVFCC('W', 'A', 'R', 'C'),        \
    KVFCC('W', 'A', 'R', 'W'), KVFCC('W', 'B', 'V', 'C'), KVFCC('W', 'H', '1', '0'), KVFCC('W', 'H', '1', '2'),        \
    KVFCC('W', 'H', 'A', 'M'), KVFCC('W', 'I', 'N', 'X'), KVFCC('W', 'M', 'V', '1'), KVFCC('W', 'M', 'V', '2'),        \
    KVFCC('W', 'M', 'V', '3'), KVFCC('W', 'M', 'V', 'P'), KVFCC('W', 'N', 'V', '1'), KVFCC('X', '2', '6', '4'),        \
    KVFCC('X', 'L', 'V', '0'), KVFCC('X', 'M', 'P', 'G'), KVFCC('X', 'V', 'I', 'D'), KVFCC('Y', '2', '1', '1'),        \
    KVFCC('Y', '4', '1', 'P'), KVFCC('Y', '4', '1', 'T'), KVFCC('Y', '4', '2', 'T'), KVFCC('Y', '4', '4', '4'),        \
    KVFCC('Y', 'C', '1', '2'), KVFCC('Y', 'U', 'N', 'V'), KVFCC('Y', 'U', 'V', ' '), KVFCC('Y', 'U', 'V', '4'),        \
    KVFCC('Y', 'U', 'V', '8'), KVFCC('Y', 'U', 'Y', '2'), KVFCC('Y', 'V', '1', '2'), KVFCC('Y', 'V', 'U', '9'),        \
    KVFCC('Y', 'V', 'Y', 'U'), KVFCC('_', 'v', 'i', 'a'), KVFCC('a', '1', '2', 'v'), KVFCC('a', '2', '3', 'b'),        \
    KVFCC('a', '4', '6', 'b'), KVFCC('a', '4', 'p', 'm'), KVFCC('a', '5', 'd', 'x'), KVFCC('a', 'c', 'v', 'a'),        \
    KVFCC('a', 'c', 'v', 'd'), KVFCC('a', 'c', 'v', 'h'), KVFCC('a', 'p', 'j', 'm'), KVFCC('a', 'p', 'v', 'k'),        \
    KVFCC('a', 'u', 'v', '2'), KVFCC('a', 'v', 'c', '1'), KVFCC('a', 'v', 'd', 'h'), KVFCC('a', 'v', 'd', 'x'),        \
    KVFCC('a', 'v', 'r', ' '), KVFCC('a', 'v', 'r', 'n'), KVFCC('a', 'z', 'p', 'r'), KVFCC('b', '5', 'd', 'x'),        \
    KVFCC('b', 'g', 'g', 'r'), KVFCC('b', 'g', 'r', 'f'), KVFCC('b', 'p', 'j', 'm'), KVFCC('b', 'v', 'd', 'x'),        \
    KVFCC('c', '2', 'j', 'm'), KVFCC('c', '5', 'd', 'x'), KVFCC('c', 'c', 'C', 'A'), KVFCC('c', 'f', 'h', 'd'),        \
    KVFCC('c', 'i', 'l', 'f'), KVFCC('c', 't', 'r', 'w'), KVFCC('c', 'v', 'a', 'x'), KVFCC('c', 'v', 'd', 'x'),        \
    KVFCC('c', 'v', 's', 'm'), KVFCC('c', 'x', 'p', 'j'), KVFCC('c', 'y', 'u', 'v'), KVFCC('d', '2', 'V', 'A'),        \
    KVFCC('d', '5', 'd', 'x'), KVFCC('d', 'c', 'm', 't'), KVFCC('d', 'c', 'p', 'k'), KVFCC('d', 'i', 'v', 'c'),        \
    KVFCC('d', 'i', 'v', 'x'), KVFCC('d', 'm', 'b', '1'), KVFCC('d', 'v', '2', '5'), KVFCC('d', 'v', '5', '0'),        \
    KVFCC('d', 'v', 'd', 'x'), KVFCC('d', 'v', 'h', 'd'), KVFCC('d', 'v', 's', 'd'), KVFCC('d', 'x', '5', '0'),        \
    KVFCC('e', '5', 'd', 'x'), KVFCC('e', 'h', 'v', 'd'), KVFCC('e', 'r', 'i', 'f'), KVFCC('e', 's', 'a', 'b'),        \
    KVFCC('e', 'v', 'd', 'x'), KVFCC('f', '5', 'd', 'x'), KVFCC('f', 'B', 'G', 'R'), KVFCC('f', 'R', 'G', 'B'),        \
    KVFCC('f', 'f', 'i', 't'), KVFCC('f', 'v', 'd', 'x'), KVFCC('g', '0', '1', 'R'), KVFCC('g', '0', '1', 'Y'),        \
    KVFCC('g', '0', '1', 'r'), KVFCC('g', '6', '1', 'b'), KVFCC('g', 'b', 'r', 'g'), KVFCC('g', 'c', 'C', 'A'),        \
    KVFCC('g', 'e', 'p', 'j'), KVFCC('g', 'r', 'b', 'g'), KVFCC('h', '2', '6', '4'), KVFCC('h', '4', 'p', 'a'),        \
    KVFCC('h', 'c', 'p', 'a'), KVFCC('h', 'd', 'V', 'A'), KVFCC('h', 'r', 'n', 'd'), KVFCC('h', 'r', 'p', 'a'),        \
    KVFCC('h', 'r', 'x', 'j'), KVFCC('h', 't', 'a', 'p'), KVFCC('h', 'x', 'n', 'd'), KVFCC('i', '1', 'n', 'd'),        \
    KVFCC('i', '2', '6', '3'), KVFCC('i', '2', '6', '4'), KVFCC('i', 's', 'x', 'j'), KVFCC('k', '0', '1', 'R'),        \
    KVFCC('k', '0', '1', 'r'), KVFCC('k', 'y', 'm', 'c'), KVFCC('l', 'a', 'c', 's'), KVFCC('l', 'p', 'i', 'r'),        \
    KVFCC('l', 'r', 'n', 'd'), KVFCC('l', 'r', 'x', 'j'), KVFCC('l', 'y', 'x', 'j'), KVFCC('m', 'D', '1', '0'),        \
    KVFCC('m', 'D', '3', '0'), KVFCC('m', 'D', '4', '0'), KVFCC('m', 'J', 'P', 'G'), KVFCC('m', 'c', '1', '7'),        \
    KVFCC('m', 'c', '2', '5'), KVFCC('m', 'c', '3', '5'), KVFCC('m', 'g', '0', '1'), KVFCC('m', 'g', '0', '2'),        \
    KVFCC('m', 'g', 'c', '1'), KVFCC('m', 'g', 'c', '2'), KVFCC('m', 'g', 'v', '1'), KVFCC('m', 'g', 'v', '2'),        \
    KVFCC('m', 'j', '2', 'c'), KVFCC('m', 'j', 'p', 'a'), KVFCC('m', 'j', 'p', 'g'), KVFCC('m', 'm', 'e', 's'),        \
    KVFCC('m', 'p', 'e', 'g'), KVFCC('m', 'p', 'g', '2'), KVFCC('m', 'p', 'g', 'v'), KVFCC('m', 'r', 'l', 'e'),        \
    KVFCC('m', 'r', 'x', 'j'), KVFCC('m', 'v', '1', '7'), KVFCC('m', 'v', '2', '5'), KVFCC('m', 'v', '3', '5'),        \
    KVFCC('m', 'y', 'x', 'j'), KVFCC('n', '1', 'v', 'd'), KVFCC('n', '3', 'x', 'm'), KVFCC('n', '4', 'x', 'm'),        \
    KVFCC('n', '5', 'v', 'd'), KVFCC('n', '5', 'x', 'm'), KVFCC('n', 'R', 'V', 'A'), KVFCC('n', 'c', 'p', 'a'),        \
    KVFCC('n', 'd', 'V', 'A'), KVFCC('n', 'f', 'v', 'd'), KVFCC('n', 'i', 'V', 'A'), KVFCC('n', 'p', 'v', 'd'),        \
    KVFCC('o', 'c', 'p', 'a'), KVFCC('p', '1', 'i', 'a'), KVFCC('p', '1', 'n', 'd'), KVFCC('p', '1', 'v', 'd'),        \
    KVFCC('p', '2', 'i', 'a'), KVFCC('p', '3', 'x', 'm'), KVFCC('p', '4', 'x', 'm'), KVFCC('p', '5', 'i', 'a'),        \
    KVFCC('p', '5', 'v', 'd'), KVFCC('p', '5', 'x', 'm'), KVFCC('p', '7', 'n', 'd'), KVFCC('p', 'A', 'B', 'G'),        \
    KVFCC('p', 'A', 'R', 'G'), KVFCC('p', 'B', 'G', 'A'), KVFCC('p', 'R', 'G', 'A'), KVFCC('p', 'c', 'v', 'd'),        \
    KVFCC('p', 'f', 'v', 'd'), KVFCC('p', 'h', 'v', 'd'), KVFCC('p', 'm', 'V', 'A'), KVFCC('p', 'p', 'v', 'd'),        \
    KVFCC('q', '1', 'i', 'a'), KVFCC('q', '2', 'i', 'a'), KVFCC('q', '5', 'i', 'a'), KVFCC('q', 'h', 'v', 'd'),        \
    KVFCC('q', 'r', 'n', 'd'), KVFCC('r', '8', '4', 'b'), KVFCC('r', 'c', 'v', 'h'), KVFCC('r', 'g', 'g', 'b'),        \
    KVFCC('s', '4', '2', '2'), KVFCC('s', 'c', 'p', 'a'), KVFCC('s', 'i', '2', 'k'), KVFCC('s', 'm', 's', 'v'),        \
    KVFCC('s', 'o', 'w', 't'), KVFCC('s', 'r', 'n', 'd'), KVFCC('s', 's', 'x', 'j'), KVFCC('s', 'v', 'a', 'x'),        \
    KVFCC('s', 'v', 'u', 'y'), KVFCC('t', 'c', 'C', 'A'), KVFCC('t', 'n', 'v', 'k'), KVFCC('t', 'w', 'o', 's'),        \
    KVFCC('u', 'o', 'l', 'c'), KVFCC('u', 'v', 'u', 'y'), KVFCC('v', '2', '1', '0'), KVFCC('v', '4', 'p', 'm'),        \
    KVFCC('v', 'd', 'V', 'A'), KVFCC('v', 'u', 'y', 'm'), KVFCC('w', 'a', 'r', 'c'), KVFCC('w', 'r', 'd', 'q'),        \
    KVFCC('x', '2', '6', '4'), KVFCC('x', '4', 'p', 'a'), KVFCC('x', 'g', 'd', 'q'), KVFCC('x', 'v', 'i', 'a'),        \
    KVFCC('x', 'v', 'i', 'd'), KVFCC('y', 'u', 'V', '2'), KVFCC('y', 'u', 'v', '2'),                                   \
    0u, 1u, 2u, 3u, 5u, 6u, 7u, 16u, 17u, 18u, 19u, 20u, 21u, 22u, 23u,                                                \
    24u, 32u, 33u, 34u, 35u, 36u, 37u, 38u, 48u, 49u, 50u, 51u, 52u, 53u, 54u,                                         \
    55u, 56u, 57u, 58u, 59u, 60u, 61u, 64u, 65u, 80u, 85u, 96u, 97u, 98u, 99u,                                         \
    100u, 101u, 102u, 103u, 128u, 256u, 512u, 514u, 515u, 544u, 768u, 1024u, 4096u, 4097u, 4098u,                      \
    4099u, 4100u, 4352u, 5120u,                                                                                        \
    0x31000000u, 0x6770EA6Du, 0x6770EAEDu, 0x6D730002u, 0x6D730011u, 0x8800001Eu, 0x8810001Eu
// clang-format on

/* How many they are. */
#define KVFCC_LISTED_COUNT 682

#endif
