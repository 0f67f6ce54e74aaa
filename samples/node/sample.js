// sample.js WSDL PAGING_SERVER [SECOND_PAGING_SERVER]: sends a message, asks about it, adds a group, and is refused once.
// Status 1 when the message was not sent, or something else failed.

import soap from "soap";

const [wsdl, pager, second] = process.argv.slice(2);
const faultOf = (error) => error.root?.Envelope?.Body?.Fault?.faultstring;

function fail(words) {
  console.log(words);
  process.exit(1);
}
process.on("uncaughtException", (error) =>
  fail(faultOf(error) ? `fault: ${faultOf(error)}` : `no answer from the service: ${error.message}`),
);

const service = await soap.createClientAsync(wsdl);
// When the service is reached by another address than its description names:
// service.setEndpoint("https://soap.plant.example/cgi-bin/quorbel-soap");

// The properties travel in the order in which they are written here: keep the description's, szURL2 last.
const [sent] = await service.SendStdMessageAsync({
  szURL: pager,
  szRecipientName: "oncall",
  nPriority: 2,
  bTimeStamp: true,
  ResponseActionData: [
    { szResponse: "1", szAction: "ack", bFinal: true },
    { szResponse: "2", szAction: "escalate", bFinal: false },
  ],
  CustomFieldData: [{ szFieldName: "ticket", szFieldValue: "T-7" }],
  szMessage: 'Pump 4 <hot> & "loud"',
  szSender: "ops",
  szURL2: second, // undefined leaves an element out
});
// A message that could not be delivered is no fault: the text then is the transport's. The paging server names a job.
const text = sent.SendStdMessageResult ?? "";
const job = text.match(/job (\S+)/)?.[1];
if (!job) fail(`not sent: ${text.trim()}`);
console.log("sent:", text.trim());

const [{ QueryMessageResult: answer }] = await service.QueryMessageAsync({
  szURL: pager,
  szJobID: job,
  szURL2: second,
});
console.log("query:", answer.szResponseMessage);
for (const line of answer.szResult?.string ?? []) console.log("  " + line);

const admin = { szURL: pager, szAdminName: "admin", szAdminPassword: "secret" };
const [added] = await service.AddGroupAsync({
  ...admin,
  szGroupName: "night",
  szDescription: "Night shift",
  bAlertOwner: true,
  szURL2: second,
});
console.log("added:", added.AddGroupResult.trim());

try {
  await service.DeleteGroupAsync({ ...admin, szAdminPassword: "", szGroupName: "night" });
} catch (error) {
  console.log("fault:", faultOf(error));
}
