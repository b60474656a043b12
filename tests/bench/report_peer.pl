#!/usr/bin/env perl
# The report of tests/bench/reports_bench.cpp as a program of its own: unpack cuts the columns of both lines of a test,
# split the texts behind them, printf lays them out.
#
# usage: report_peer.pl LOG >REPORT
use strict;
use warnings;

while (my $first = <>) {
  next if substr($first, 9, 1) =~ /[CL]/;
  my $second = <>;
  chomp($first, $second);
  my @texts = split /:/, substr($first, 144);
  my ($number, $range, $indicated, $actual, $modifier, $error, $percent) =
    unpack 'A4 x15 A6 A15 A15 A16 A13 A6', $first;
  my ($system, $test, $ratio, $condition, $verdict) = unpack 'x19 A23 A20 A9 A13 A6', $second;
  printf "%3d      %-6s%-15s%-15s%-16s%-13s%-5s%s\n", $number, $range, $indicated, $actual, $modifier, $error,
    $percent, $verdict;
  printf "         %-23s%-20s%-9s%-24s%-13s%-13s%-9s%s%s\n", $system, $test, $ratio, $texts[1], $texts[4],
    $texts[5], $texts[8], $texts[6], $condition;
}
