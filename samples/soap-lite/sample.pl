#!/usr/bin/perl
# sample.pl WSDL PAGING_SERVER [SECOND_PAGING_SERVER]: sends a message, asks about it, adds a group, and is refused once.
# Status 1 when the message was not sent, or something else failed.
use strict;
use warnings;
use SOAP::Lite;

my ($wsdl, $pager, $second) = @ARGV;
my @url2 = $second ? [szURL2 => $second] : ();    # comes last in every method
$SIG{__DIE__} = sub { print @_; exit 1 };
my $namespace = 'http://quorbel.example/soap';
my $methods = SOAP::Schema->schema_url($wsdl)->parse->services->{Quorbel};
my $service = SOAP::Lite->new(
    proxy => "$methods->{SendStdMessage}{endpoint}",    # or the service's address as a text
    default_ns => $namespace,
    on_action => sub { qq("$_[0]/$_[1]") },
);

# Every value with a type: else SOAP::Lite guesses one from the text, and sends what is not ASCII as base64.
sub value { my ($name, $value) = @_; return SOAP::Data->name($name)->value($value)->type('string') }
sub values_of { return map { value(@$_) } @_ }
sub item { my ($name, @members) = @_; return SOAP::Data->name($name => \SOAP::Data->value(values_of(@members))) }

# call METHOD, ELEMENT...: the elements travel in this order: keep the description's, szURL2 last.
sub call {
    my ($method, @elements) = @_;
    my $answer = $service->call($method => @elements);
    die 'fault: ', $answer->faultstring, "\n" if $answer->fault;
    return $answer->result;
}

my $text = call(SendStdMessage =>
    values_of([szURL => $pager], [szRecipientName => 'oncall'], [nPriority => 2], [bTimeStamp => 'true']),
    item(ResponseActionData => [szResponse => 1], [szAction => 'ack'], [bFinal => 'true']),
    item(ResponseActionData => [szResponse => 2], [szAction => 'escalate'], [bFinal => 'false']),
    item(CustomFieldData => [szFieldName => 'ticket'], [szFieldValue => 'T-7']),
    values_of([szMessage => 'Pump 4 <hot> & "loud"'], [szSender => 'ops'], @url2));
# A message that could not be delivered is no fault: the text then is the transport's. The paging server names a job.
my ($job) = $text =~ /job (\S+)/;
if (!defined $job) {
    print "not sent: $text\n";
    exit 1;
}
print 'sent: ', $text =~ s/\s+$//r, "\n";

my $answer = call(QueryMessage => values_of([szURL => $pager], [szJobID => $job], @url2));
print "query: $answer->{szResponseMessage}\n";
my $lines = $answer->{szResult}{string};
print "  $_\n" for ref $lines ? @$lines : $lines;    # a list of one is a plain text here

my @admin = ([szURL => $pager], [szAdminName => 'admin'], [szAdminPassword => 'secret']);
my $added = call(AddGroup => values_of(@admin, [szGroupName => 'night'], [szDescription => 'Night shift'],
                                       [bAlertOwner => 'true'], @url2));
print 'added: ', $added =~ s/\s+$//r, "\n";

eval {
    local $SIG{__DIE__};
    call(DeleteGroup => values_of([szURL => $pager], [szAdminName => 'admin'], [szAdminPassword => ''],
                                  [szGroupName => 'night']));
} or print $@;
